#include "tree/find/find_hits.h"

#include <algorithm>

#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

constexpr std::size_t kAttemptsMax = 2 * FindHits::kHitsMax;

}  // namespace

struct FindHits::Search {
  explicit Search(const RegexProgram& program) : plan(program) {}
  RegexPlan plan;
  RegexMatcher matcher;
};

FindHits::FindHits() {
  const RegexProgram* const last = RegexLastProgram();
  if (MayFindNext() && last) m_search = std::make_unique<Search>(*last);
}

FindHits::FindHits(const RegexProgram& program) : m_search(std::make_unique<Search>(program)) {}

FindHits::~FindHits() = default;

const std::vector<HitRange>& FindHits::In(std::string_view text, std::int64_t steps,
                                          std::size_t shownBytes) {
  m_hits.clear();
  if (!m_search) return m_hits;
  auto& [plan, matcher] = *m_search;
  RegexAnswer answer = matcher.Begin(plan, text, steps);
  for (std::size_t attempts = 0; answer == RegexAnswer::Yes && attempts < kAttemptsMax;
       ++attempts) {
    // A match may extend beyond the text's end, to the zero after it.
    const std::size_t begin = matcher.MatchStart();
    const std::size_t end = std::min(matcher.MatchEnd(), text.size());
    if (begin >= shownBytes) break;
    if (begin < end) m_hits.push_back({begin, end});
    if (m_hits.size() == kHitsMax) break;
    answer = matcher.Next(plan, text, matcher.StepsLeft());
  }
  return m_hits;
}
