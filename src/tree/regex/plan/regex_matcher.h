// Searches texts for matches, by one plan or by many in turn.
//
// Owner    Borrows plan and text. Both are needed in each call, but the text may lie elsewhere the
//          next time.
// Errors   None. Searching allocates nothing.
// Threads  One at a time.
#pragma once

#include <cstdint>
#include <string_view>

#include "tree/regex/plan/regex_machine.h"
#include "tree/regex/plan/regex_plan.h"

enum class RegexAnswer { No, Yes, Unfinished };

class RegexMatcher {
 public:
  // A search stops when `steps` are used up; continue with Resume and the same plan and text.
  RegexAnswer Begin(const RegexPlan& plan, std::string_view text, std::int64_t steps);
  RegexAnswer Resume(const RegexPlan& plan, std::string_view text, std::int64_t steps);
  // After a Yes: searches the next match, which begins at the end of the last one or later.
  RegexAnswer Next(const RegexPlan& plan, std::string_view text, std::int64_t steps);
  // An unfinished search is dropped: Resume answers No.
  void Stop() { m_unfinished = false; }

  // After a Yes, counted from the text's start.
  std::size_t MatchStart() const { return m_place; }
  std::size_t MatchEnd() const { return m_matchEnd; }
  // What is left of the steps of the call.
  std::int64_t StepsLeft() const { return m_stepsLeft; }
  const RegexMachine& Machine() const { return m_machine; }

 private:
  bool MayMatchFrom(const RegexPlan& plan, std::string_view text, std::size_t place);
  RegexAnswer BeginAt(const RegexPlan& plan, std::string_view text, std::size_t place,
                      std::int64_t steps);
  RegexAnswer TryFirst(const RegexPlan& plan, std::string_view text, std::int64_t steps);
  RegexAnswer Try(const RegexPlan& plan, std::string_view text, RegexRun run, std::int64_t& steps);

  RegexMachine m_machine;
  bool m_unfinished = false;
  std::size_t m_place = 0;  // of the attempt
  std::size_t m_matchEnd = 0;
  std::int64_t m_stepsLeft = 0;
  std::size_t m_needAt = 0;  // a position of what must occur; kNowhere before it is searched
};

// Most texts of a search end here: these two are inline for the sake of speed.
inline RegexAnswer RegexMatcher::Begin(const RegexPlan& plan, std::string_view text,
                                       std::int64_t steps) {
  m_unfinished = false;
  if (!plan.CanMatch(text)) return RegexAnswer::No;
  m_needAt = kNowhere;
  if (plan.LooksForNeedFirst() && !MayMatchFrom(plan, text, 0)) return RegexAnswer::No;
  return BeginAt(plan, text, plan.FirstPlace(text), steps);
}

inline RegexAnswer RegexMatcher::BeginAt(const RegexPlan& plan, std::string_view text,
                                         std::size_t place, std::int64_t steps) {
  m_place = place;
  m_stepsLeft = steps;
  if (place == kNowhere) return RegexAnswer::No;
  if (plan.WholeBytes() == 0) return TryFirst(plan, text, steps);
  m_matchEnd = place + plan.WholeBytes();
  return RegexAnswer::Yes;
}
