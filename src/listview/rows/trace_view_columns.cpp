// The columns of the list view: what the user does in the header, and the columns of times.
#include "docview/commands/command_ids.h"
#include "listview/columns/time_columns.h"
#include "listview/rows/trace_view.h"

bool CTraceView::OnColumnResizing(ListColumn column, int widthPx) {
  return m_columns.Refuses(column, widthPx);
}

void CTraceView::OnColumnResized(ListColumn column, int widthPx) {
  m_columns.TakeWidth(column, widthPx);
}

void CTraceView::OnColumnsReordered() {
  // The order of the header is final only when the drag has ended.
  PostMessage(WM_TRACE_SAVEORDER);
}

// Only the application knows all windows.
void CTraceView::OnHeaderContextMenu(std::optional<ListColumn> column, int xPx, int yPx) {
  m_columns.OpenMenu(GetHost(), column, xPx, yPx, [this] {
    if (CWnd* const main = GetHost().MainWindow()) main->OnCommand(ID_COLUMNS_CHANGED);
  });
}

// ---- times

TimeCells& CTraceView::Times() {
  if (!m_times) m_times = std::make_unique<TimeCells>(m_document, [this] { m_list->Repaint(); });
  return *m_times;
}

std::string CTraceView::TimeText(int row, Column column) {
  const TraceEvent_i* const event = EventOfRow(row);
  if (!event || m_document.m_loading) return {};
  return Times().Text(column, *event, EventOfRow(row - 1), m_rows.PlaceOf(row));
}

void CTraceView::OnTimeReference() {
  const TraceEvent_i* const event = CurrentEvent();
  if (!event) return;
  Times().ToggleReference(*event);
  // The reference is to be seen. The application shows the column in all windows.
  CWnd* const main = GetHost().MainWindow();
  if (!IsTimeColumnShown(Column::Since) && main) main->OnCommand(ID_VIEW_TIMESINCE);
  m_list->Repaint();
}
