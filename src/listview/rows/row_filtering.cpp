#include "listview/rows/row_filtering.h"

#include <algorithm>

void RowFiltering::BeforeRemoval(const CTraceHint& hint, int topNow) {
  if (scan) scan->OnTrim(hint);
  if (std::ranges::find(hint.m_events, wanted) != hint.m_events.end()) EndSearch();
  NoteTop(topNow);
}

void RowFiltering::Remove(const TraceEvent_i* event, bool oldest) {
  if (const int row = kept ? earlier.RemoveRow(event, oldest) : -1; row != -1) OnEarlierGone(row);
  if (!shown) fresh.RemoveRow(event, oldest);
  late.RemoveRow(event, oldest);
}

void RowFiltering::OnEarlierGone(int row) {
  earlierTop = std::max(earlierTop - 1, 0);
  if (!earlierStates) return;
  earlierStates->selected.Close(row, 1);
  int& focus = earlierStates->focus;
  focus = focus == row ? -1 : focus > row ? focus - 1 : focus;
}

// The rows that were looked at have other numbers now.
void RowFiltering::AfterRemoval(const RowStore& rows, int topNow) {
  if (search) LookFor(rows, *wanted, sender);
  top = topNow;
}
