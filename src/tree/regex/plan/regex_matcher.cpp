#include "tree/regex/plan/regex_matcher.h"

#include <algorithm>

bool RegexMatcher::MayMatchFrom(const RegexPlan& plan, std::string_view text, std::size_t place) {
  if (!plan.HasNeed()) return true;
  if (m_needAt == kNowhere || m_needAt < place) m_needAt = plan.FindNeed(text, place);
  return m_needAt != kNowhere;
}

RegexAnswer RegexMatcher::Next(const RegexPlan& plan, std::string_view text, std::int64_t steps) {
  m_unfinished = false;
  const std::size_t behind = std::max(m_matchEnd, m_place + 1);
  if (behind > text.size()) return RegexAnswer::No;
  return BeginAt(plan, text, plan.PlaceAfterMatch(text, behind), steps);
}

RegexAnswer RegexMatcher::TryFirst(const RegexPlan& plan, std::string_view text,
                                   std::int64_t steps) {
  if (!MayMatchFrom(plan, text, m_place)) return RegexAnswer::No;
  const RegexRun run = m_machine.Begin(plan.Nodes(), text, m_place, plan.WordFlag(), steps);
  return Try(plan, text, run, steps);
}

RegexAnswer RegexMatcher::Resume(const RegexPlan& plan, std::string_view text, std::int64_t steps) {
  if (!m_unfinished) return RegexAnswer::No;
  m_unfinished = false;
  return Try(plan, text, m_machine.Resume(plan.Nodes(), text, steps), steps);
}

RegexAnswer RegexMatcher::Try(const RegexPlan& plan, std::string_view text, RegexRun run,
                              std::int64_t& steps) {
  while (run == RegexRun::Miss) {
    m_place = plan.PlaceAfterMiss(text, m_place, m_machine.FirstStop());
    if (m_place == kNowhere || !MayMatchFrom(plan, text, m_place)) return RegexAnswer::No;
    run = m_machine.Begin(plan.Nodes(), text, m_place, plan.WordFlag(), steps);
  }
  m_stepsLeft = steps;
  if (run == RegexRun::Hit) {
    m_matchEnd = m_machine.MatchEnd();
    return RegexAnswer::Yes;
  }
  m_unfinished = true;
  return RegexAnswer::Unfinished;
}
