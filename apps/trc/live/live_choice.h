// Which live traces are taken: --uncheck and its like, the values, the filter text, and --context
// around them.
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
  TraceEvent_i* trace;  // the receiver's
  bool beside;          // only because it stands beside a chosen one
  bool behindGap;       // others were left out between it and the one taken before
};
// False ends it.
using TraceTaker = std::function<bool(const TakenTrace&)>;

class LiveChoice {
 public:
  LiveChoice(const TraceOptions& options, const NameMap& names);
  ~LiveChoice();
  LiveChoice(const LiveChoice&) = delete;
  LiveChoice& operator=(const LiveChoice&) = delete;

  // Takes ownership of the next trace, and passes on what it decides. False: the taker ends it.
  bool Add(TraceEvent_i* trace, const TraceTaker& take);
  // So many were chosen that no more are wanted, and what stands behind the last has come.
  bool IsFull() const { return m_chosen >= m_options.count && m_behind == 0; }
  // What was asked for and never came, as messages.
  std::vector<std::string> Missing() const;

 private:
  bool Passes(const TraceEvent_i& trace);
  bool Take(TraceEvent_i* trace, bool beside, const TraceTaker& take);
  void Hold(TraceEvent_i* trace);

  const TraceOptions& m_options;
  LiveFilter m_filter;
  ChoiceTest m_choice;
  LiveWhere m_where;
  std::deque<TraceEvent_i*> m_held;  // those before the next chosen one
  std::uint64_t m_chosen = 0, m_behind = 0;
  bool m_any = false, m_gap = false;
};
