// Which colour rule holds for each of the traces that are shown, asked when they are painted.
//
// Shape    What was found for a trace is kept, for the kKept traces that were asked about last, so
//          a row that comes back is not asked about anew. It stays true as long as the trace and
//          the names are the same: a text looks at its trace, at the trace before for `delta`, and
//          at the newest one for `end`. When the end moves, only traces are asked about anew for
//          which a rule with `end` was asked. A text that can change otherwise needs ForgetAll.
//          A page has a time. What is left over is not known yet: it goes on with the next page
//          where this one ended, so each page brings at least one answer of a rule.
// Owner    Shares the rules; borrows the names. A trace is only compared after its page, but call
//          Forget before it is deleted: another one may come to its place.
// Errors   A search of `matches` is given up earlier than in a filter, and finds nothing then; it
//          is counted.
// Threads  One.
#pragma once

#include <chrono>
#include <cstddef>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "records/trace_event.h"
#include "where/colours/colour_program.h"
#include "where/where_matcher.h"

class ColourJudge {
 public:
  static constexpr std::size_t kKept = 4096;
  static constexpr WhereBounds kBounds{.steps = 5'000, .textBytes = std::size_t{16} << 10};
  // What the searches of one rule may take for one trace; the last one of them a little longer.
  static constexpr std::chrono::milliseconds kRuleTime{10};
  using Clock = std::chrono::steady_clock;
  // The document's trace before the one that is asked about. Nothing: it is not known yet.
  using Before = std::function<std::optional<WherePrevious>()>;
  struct Verdict {
    bool known = false;
    const ColourRule* rule = nullptr;  // of the program; null: no rule holds
  };

  ColourJudge(ColourProgramPtr program, const NameMap& names);
  ColourJudge(const ColourJudge&) = delete;
  ColourJudge& operator=(const ColourJudge&) = delete;

  // Also where names may have come.
  void BeginPage(const WhereClock& clock, Clock::time_point until = Clock::time_point::max());
  Verdict Of(const TraceEvent_i& trace, const Before& before);
  // Has a trace of this page no answer yet?
  bool IsLate() const { return m_late; }
  void Forget(const TraceEvent_i* trace);
  // All answers, and what was learned of the names: they may be others.
  void ForgetAll();

  const ColourProgram& Program() const { return *m_program; }
  std::uint64_t GivenUp() const;                   // searches, since the last ForgetAll
  std::uint64_t Asked() const { return m_asked; }  // rules, for the tests

 private:
  struct Line {
    std::size_t rule;  // of the program
    std::unique_ptr<WhereMatcher> matcher = {};
  };
  struct Kept {
    const TraceEvent_i* trace = nullptr;
    std::uint32_t end = 0;   // the end that was asked about; 0: none
    std::uint16_t next = 0;  // the line that is asked next, or that holds
    bool known = false;
  };
  static constexpr std::size_t kWays = 4, kSets = kKept / kWays;

  Kept* SetOf(const TraceEvent_i* trace);
  Kept& KeptOf(const TraceEvent_i* trace);
  WhereMatcher& MatcherOf(Line& line);
  std::optional<bool> Holds(Line& line, Kept& kept, const std::uint8_t* record,
                            const Before& before);
  void SetClock(const WhereClock& clock);
  bool IsOver();
  Verdict VerdictOf(const Kept& kept) const;

  const ColourProgramPtr m_program;
  const NameMap& m_names;
  std::size_t m_namesKnown = 0;
  WhereClock m_clock;
  std::vector<Line> m_lines;  // the rules that are asked
  std::vector<Kept> m_kept;
  std::uint32_t m_end = 1, m_turn = 0;
  Clock::time_point m_until = Clock::time_point::max();
  bool m_begun = false, m_late = false;
  std::uint64_t m_asked = 0;
  std::vector<std::uint8_t> m_record;  // of a trace that has none
};
