// Find and Find Next in the list view.
#include "listview/rows/row_walk.h"
#include "listview/rows/trace_view.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

void CTraceView::Find(bool asked) {
  if (!FinishFilter()) return;
  std::optional<CWaitCursor> wait;
  if (asked) wait.emplace(GetHost());
  FindInRows();
}

void CTraceView::FindInRows() {
  RowWalk walk(m_rows, m_list->NextItem(-1, kRowFocused), FindSettings.backward != 0);
  if (const RegexProgram* const program = RegexLastProgram())
    walk.Scan(m_document.m_traces, [&](const ScanOrder& order) {
      return TextScan::Begin(m_document.Lend(), *program, order);
    });
  switch (RunSearch(GetHost(), &m_document, walk)) {
    case FindResult::Hit:
      // Row -1, where a search stops that began with the first row, means all rows.
      m_list->SetItemState(walk.StopRow(), 0, kRowFocused);
      m_list->SetItemState(walk.Row(), kRowFocused, kRowFocused);
      m_list->EnsureVisible(walk.Row());
      ShowHits(true);
      m_list->ShowHit(walk.Row(), Column::Trace);
      Follow(EventOfRow(walk.Row()));
      break;
    case FindResult::NotFound:
      ReportNotFound(GetHost());
      break;
    case FindResult::Cancelled:
      break;
  }
}
