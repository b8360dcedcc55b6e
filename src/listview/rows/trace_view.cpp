#include "listview/rows/trace_view.h"

#include "base/text.h"
#include "docview/commands/command_ids.h"
#include "listview/columns/time_columns.h"
#include "listview/rows/cell_value.h"

CTraceView::CTraceView(CTraceDoc& document, const RowListMaker& makeList)
    : TracePane(document), m_rows(document.m_traces), m_list(makeList(*this)) {
  MapCommand(ID_VIEW_HEADERMENU, [this] { m_list->Header().AskForMenu(); });
  MapCommand(ID_VIEW_FITCOLUMNS, [this] { m_columns.Fit(); });
  MapCommand(
      ID_VIEW_TIMEREFERENCE, [this] { OnTimeReference(); },
      [this](CCmdUI& ui) {
        ui.Enable(CurrentEvent() != nullptr);
        ui.SetCheck(m_times && m_times->IsReference(CurrentEvent()));
      });
  // The view comes before the document, whose own save would write all traces, not the rows.
  for (const unsigned save : {+ID_FILE_SAVE, +ID_FILE_SAVECOPY})
    MapCommand(save, [this] { OnSaveTraces(); });
}

CTraceView::~CTraceView() = default;

void CTraceView::OnInitialUpdate() {
  CView::OnInitialUpdate();
  if (m_firstUpdate) {
    m_firstUpdate = false;
    m_columns.Create();
    m_list->ShowEndMark(m_document.IsStream());
    if (!m_document.m_loading) RebuildRows();
  } else if (m_currentEvent) {
    GoTo(this, m_currentEvent);
  }
}

std::intptr_t CTraceView::OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  switch (message) {
    case WM_TRACE_SAVEORDER:
      m_columns.StoreOrder();
      Invalidate();
      return 0;
    case WM_TRACE_SHOWROW:
      m_list->EnsureVisible(static_cast<int>(wParam));
      return 0;
    default:
      return TracePane::OnMessage(message, wParam, lParam);
  }
}

TraceEvent_i* CTraceView::CurrentEvent() const {
  return EventOfRow(m_currentRow);
}

void CTraceView::VisitPage(const VisitTrace& visit) const {
  const int top = m_list->TopIndex(), end = top + m_list->CountPerPage();
  for (int row = top; row < end; ++row)
    if (const TraceEvent_i* const event = EventOfRow(row)) visit(*event);
}

TraceEvent_i* CTraceView::EventOfRow(int row) const {
  return GetDocument() && m_rows.Has(row) ? m_rows.EventAt(row) : nullptr;
}

// ---- the interface to the list

std::string CTraceView::RowListText(int row, ListColumn column) {
  if (IsTimeColumn(column.As<Column>())) return TimeText(row, column.As<Column>());
  const TraceEvent_i* event = EventOfRow(row);
  if (!event) return {};
  const std::string text =
      CellText(column.As<Column>(), *event, EventOfRow(row - 1), m_document.m_names, g_useUtc);
  return std::string(CutUtf8(text, kCellBytes - 1));
}

int CTraceView::RowListIcon(int row) {
  const TraceEvent_i* event = EventOfRow(row);
  return event ? SeverityIcon(*event) : -1;
}

void CTraceView::OnRowStateChanged(int row, unsigned oldState, unsigned newState) {
  if (m_filtering) m_filtering->OnChosen();
  if (oldState & kRowFocused) m_currentRow = -1;
  if (newState & kRowFocused) {
    m_currentRow = row;
    // The user has chosen another trace than the one that is looked for.
    if (m_filtering) m_filtering->EndSearch();
  }
  if (!((oldState ^ newState) & kRowFocused)) return;
  ShowHits(false);
  Tell(&PaneWatcher::OnCurrentTrace);
}

void CTraceView::OnRowClicked(int row) {
  // Also a row that has the focus already.
  if (m_filtering) {
    m_filtering->OnChosen();
    m_filtering->EndSearch();
  }
  Follow(EventOfRow(row));
}

void CTraceView::OnRowDoubleClicked(int) {
  OnCommand(ID_VIEW_PROPERTIES);
}

void CTraceView::OnRowListContextMenu(int screenXPx, int screenYPx) {
  // Beside the rows the menu is opened with nothing selected.
  const TraceEvent_i* const event = m_list->SelectedCount() > 0 ? CurrentEvent() : nullptr;
  const std::optional<ListColumn> column = m_list->ColumnAtScreen(screenXPx);
  std::optional<CellValue> cell;
  if (event && column) cell = CellValueOf(column->As<Column>(), *event, m_document.m_names);
  ShowContextMenu(screenXPx, screenYPx, StepsOfCell(cell, event, m_document.m_names));
}

void CTraceView::Invalidate() {
  m_list->SetRedraw(false);
  m_list->SetRedraw(true);
}
