// Which traces of a stream are taken: --uncheck and its like, the values, the filter text, --from,
// and --context around them.
//
// Owner    Borrows options and names. Holds the traces that may still be wanted as context.
// Threads  One.
#pragma once

#include <deque>
#include <functional>

#include "filter/live_filter.h"
#include "filter/trace_options.h"
#include "filter/where_option.h"

// A trace that is taken.
struct TakenTrace {
  TraceEvent_i* trace;              // the receiver's
  std::uint64_t place;              // in the stream, from 0
  bool beside;                      // only because it stands beside a chosen one
  bool behindGap;                   // others were left out between it and the one taken before
  WherePrevious before;             // the one before in the stream
  std::optional<std::int64_t> end;  // as SetEnd was told
};
// False ends it.
using TraceTaker = std::function<bool(const TakenTrace&)>;

class LiveChoice {
 public:
  using Test = std::function<bool(const TraceEvent_i&)>;

  LiveChoice(const TraceOptions& options, const NameMap& names);
  ~LiveChoice();
  LiveChoice(const LiveChoice&) = delete;
  LiveChoice& operator=(const LiveChoice&) = delete;

  // Chooses only of those for which the test holds. It is not asked about what the options hide.
  void Keep(Test test) { m_test = std::move(test); }
  // Leaves out so many of the chosen ones. They may stand beside later ones.
  void Skip(std::uint64_t chosen) { m_skip = chosen; }
  // "end" of the filter text; nothing: the trace that is asked about.
  void SetEnd(std::optional<std::int64_t> end) {
    m_end = end;
    m_where.SetEnd(end);
  }
  // Takes ownership of the next trace, and passes on what it decides. False: the taker ends it.
  bool Add(TraceEvent_i* trace, const TraceTaker& take);
  // Ids are numbered anew, also those of what is held.
  void Renumber(const NewId& newId);
  // So many were chosen that no more are wanted, and what stands behind the last has come.
  bool IsFull() const { return m_chosen >= m_options.count && m_behind == 0; }
  // Without those that stand beside them.
  std::uint64_t Chosen() const { return m_chosen; }
  // What was asked for and never came, as messages.
  std::vector<std::string> Missing() const;

 private:
  struct Held {
    TraceEvent_i* trace;
    std::uint64_t place;
    WherePrevious before;
  };
  bool Passes(const TraceEvent_i& trace);
  bool IsChosen(const TraceEvent_i& trace);
  bool Take(const Held& held, bool beside, const TraceTaker& take);
  void Hold(const Held& held);

  const TraceOptions& m_options;
  LiveFilter m_filter;
  ChoiceTest m_choice;
  LiveWhere m_where;
  Test m_test;
  WherePrevious m_before;
  std::optional<std::int64_t> m_end;
  std::deque<Held> m_held;  // those before the next chosen one
  std::uint64_t m_place = 0, m_skip = 0;
  std::uint64_t m_chosen = 0, m_behind = 0;
  bool m_any = false, m_gap = false;
};
