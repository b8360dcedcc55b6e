// The traces that a pane shows, in the order of its document, as numbered rows. Those of the list
// are at hand. For the tree the document is walked, by the filter of the pane.
//
// Owner    Borrows the pane and its traces.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <optional>

#include "docview/dialogs/long_work.h"
#include "listview/rows/trace_view.h"
#include "tree/filter/filter_pass.h"

struct ShownTrace {
  TraceEvent_i* trace = nullptr;
  int row = 0;
};

// Visits them until the visitor has enough.
class ShownWalk final : public LongWork {
 public:
  using Visit = std::function<bool(const ShownTrace& shown)>;  // true: enough

  ShownWalk(TracePane& pane, Visit visit);
  bool DoPart() override;
  std::optional<int> Progress() const override;
  int Visited() const { return m_row; }

 private:
  std::size_t All() const;

  const CTraceView* const m_list;  // null: the tree
  const TraceList_t& m_traces;
  FilterPass m_pass;
  const std::size_t m_part;
  const Visit m_visit;
  std::size_t m_next = 0;
  int m_row = 0;
};

enum class GoToResult { Found, None, Cancelled };
// The earliest one at or after the moment, the first one of several at that time. Times of a file
// may step back, so all are looked at. `none`: what is said of the user's time where there is none.
GoToResult FindTime(TracePane& pane, std::int64_t moment, ShownTrace& found, std::string& none);
// How many there are; nothing: the user has cancelled.
std::optional<int> CountShown(TracePane& pane);
// REQUIRES: there are more.
GoToResult FindRow(TracePane& pane, int row, ShownTrace& found);
// Selects it, and the other panes of the document follow if they are synchronised.
void ShowTrace(TracePane& pane, const ShownTrace& shown);
