// A filter text that is being applied to the rows of a list.
//
// Shape    The earlier rows are shown until there is a page of the new ones; these then grow at
//          their end. The earlier rows are kept, and follow ticks and trims, until the new ones are
//          complete: so a cancel brings them back, with their selection. A second text begins while
//          the rows of the first one are shown; the earlier rows stay those of the text that was in
//          force.
// Owner    Owned by the view; borrows the document and its traces.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <optional>

#include "controls/list/row_ranges.h"
#include "docview/host_timer.h"
#include "listview/rows/nearest_row.h"
#include "listview/rows/row_store.h"
#include "panes/trace_scan.h"

class CView;

struct RowFiltering {
  // Of rows by their numbers; -1: none has the focus.
  struct States {
    RowRanges selected;
    int focus = -1;
  };

  // `utc`: the zone of the shown rows.
  RowFiltering(const TraceList_t& traces, const CTraceFilter& filter, bool changed, bool utc)
      : before(filter),
        changedBefore(changed),
        utcBefore(utc),
        earlier(traces),
        fresh(traces),
        late(traces) {}

  // The shown rows are those of the text before, all of them.
  bool ShowsEarlier() const { return scan && !kept; }
  // The shown rows are all that there will be.
  bool ShowsWhole() const { return !scan || !kept; }
  void LookFor(const RowStore& rows, const TraceEvent_i& target, CView* by) {
    wanted = &target;
    sender = by;
    search.emplace(rows, target);
  }
  // Around code that gives the focus: the user did not.
  bool selecting = false;
  void OnChosen() {
    if (!selecting) earlierStates.reset();
  }
  void EndSearch() {
    search.reset();
    wanted = nullptr;
  }
  // Around the removal of traces from the shown rows. Remove takes one from the others.
  void BeforeRemoval(const CTraceHint& hint, int topNow);
  void Remove(const TraceEvent_i* event, bool oldest);
  void OnEarlierGone(int row);
  void AfterRemoval(const RowStore& rows, int topNow);

  CTraceFilter before;  // in force until the new rows are complete
  const bool changedBefore, utcBefore;
  std::unique_ptr<TraceScan> scan;  // null: the rows are complete
  std::optional<HostTimer> few;     // until a few rows are shown though no more come
  RowStore earlier;                 // if `kept`: the rows by `before`
  bool kept = false;
  int earlierTop = 0;
  bool earlierAtEnd = false;  // they follow what comes
  // None: the user has chosen another trace since they went.
  std::optional<States> earlierStates;
  RowStore fresh;  // the new rows, until they are shown
  bool shown = false;
  RowStore late;  // rows of traces that came after the scan had begun: they follow on its rows

  // The trace that gets the focus when its row is there, or the nearest one; null: none.
  const TraceEvent_i* wanted = nullptr;
  CView* sender = nullptr;
  std::optional<NearestRow> search;
  // Has the user scrolled since the rows were shown? Then nothing scrolls below his hands.
  void NoteTop(int topNow) { moved = moved || topNow != top; }
  int top = 0;
  bool moved = false;

  const TraceScan::Clock::time_point begun = TraceScan::Clock::now();
  TraceScan::Clock::time_point painted = begun;
};
