#include "tree/find/find_hits.h"

#include <algorithm>

#include "tree/find/find_settings.h"
#include "tree/regex/regex_plan.h"

namespace {

// Some ten milliseconds at the very most for one text.
constexpr std::int64_t kStepsPerHit = 2000;
constexpr std::size_t kMostAttempts = 2 * FindHits::kMostHits;

}  // namespace

FindHits::FindHits() = default;
FindHits::~FindHits() = default;

bool FindHits::BringPlanUpToDate() {
  if (!MayFindNext() || RegexPrepared() == 0) return false;
  if (!m_plan || m_prepared != RegexPrepared()) {
    m_plan = std::make_unique<RegexPlan>();
    m_prepared = RegexPrepared();
  }
  return true;
}

const std::vector<HitRange>& FindHits::In(std::string_view text) {
  m_hits.clear();
  if (!BringPlanUpToDate()) return m_hits;
  RegexAnswer answer = m_plan->Begin(text, kStepsPerHit);
  for (std::size_t attempts = 0; answer == RegexAnswer::Yes && attempts < kMostAttempts;
       ++attempts) {
    // A match may reach over the text's end, into the zero behind it.
    const std::size_t begin = m_plan->MatchStart();
    const std::size_t end = std::min(m_plan->MatchEnd(), text.size());
    if (begin < end) m_hits.push_back({begin, end});
    if (m_hits.size() == kMostHits) break;
    answer = m_plan->Next(text, kStepsPerHit);
  }
  return m_hits;
}
