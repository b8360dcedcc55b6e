#include "tree/find/find_hits.h"

#include <algorithm>

#include "tree/find/find_settings.h"
#include "tree/regex/regex_plan.h"

namespace {

constexpr std::size_t kMostAttempts = 2 * FindHits::kMostHits;

}  // namespace

FindHits::FindHits() {
  if (MayFindNext() && RegexPrepared() != 0) m_plan = std::make_unique<RegexPlan>();
}

FindHits::~FindHits() = default;

const std::vector<HitRange>& FindHits::In(std::string_view text, std::int64_t steps,
                                          std::size_t shownBytes) {
  m_hits.clear();
  if (!m_plan) return m_hits;
  RegexAnswer answer = m_plan->Begin(text, steps);
  for (std::size_t attempts = 0; answer == RegexAnswer::Yes && attempts < kMostAttempts;
       ++attempts) {
    // A match may extend beyond the text's end, to the zero after it.
    const std::size_t begin = m_plan->MatchStart();
    const std::size_t end = std::min(m_plan->MatchEnd(), text.size());
    if (begin >= shownBytes) break;
    if (begin < end) m_hits.push_back({begin, end});
    if (m_hits.size() == kMostHits) break;
    answer = m_plan->Next(text, m_plan->StepsLeft());
  }
  return m_hits;
}
