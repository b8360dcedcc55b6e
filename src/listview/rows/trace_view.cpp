#include "listview/rows/trace_view.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "documents/trace_panes.h"
#include "docview/frame.h"
#include "tree/regex/regex_plan.h"

namespace {

constexpr int kMinimumDragWidthPx = 16;
constexpr int kColumnMarginPx = 16;
// A control keeps 16 bits of a width.
constexpr int kWidthMask = 0xFFFF;

std::int32_t FlagOf(ListColumn column) {
  return g_activeColumns[static_cast<std::size_t>(column.Index())];
}

}  // namespace

CTraceView::CTraceView(CTraceDoc& document, const RowListMaker& makeList)
    : CView(document), m_document(document), m_rows(document.m_traces), m_list(makeList(*this)) {
  // The state of the menu item is the document's.
  MapCommand(ID_VIEW_SYNCHRONIZE, [this] { OnSynchronize(); });
  MapFindCommands();
  MapDialogCommands();
  MapCommand(
      ID_VIEW_GOTOSOURCE, [this] { OnGotoSource(); },
      [this](CCmdUI& ui) { OnUpdateGotoSource(ui); });
  MapCommand(ID_VIEW_FITCOLUMNS, [this] { OnFitColumns(); });
  MapCommand(ID_FILE_EXPORT, [this] { OnExport(); });
  // Before the document, whose own save would write all traces: here it is the rows that count.
  for (const unsigned save : {+ID_FILE_SAVE, +ID_FILE_SAVECOPY})
    MapCommand(save, [this] { OnSaveTraces(); });
}

CTraceView::~CTraceView() = default;

void CTraceView::OnInitialUpdate() {
  CView::OnInitialUpdate();
  if (m_firstUpdate) {
    m_firstUpdate = false;
    CreateColumns();
    m_list->ShowEndMark(m_document.IsStream());
    if (!m_document.m_loading) RebuildRows();
  } else if (m_currentEvent) {
    CTraceHint hint(m_currentEvent);
    OnUpdate(this, kHintFollow, &hint);
  }
}

void CTraceView::OnActivateView(bool activate, CView* activated, CView* deactivated) {
  m_active = activate;
  if (activate) {
    TellStatus();
  } else {
    TellRowCount(GetHost(), -1);
    TellFiltered(GetHost(), -1);
  }
  CView::OnActivateView(activate, activated, deactivated);
}

std::intptr_t CTraceView::OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  switch (message) {
    case WM_TRACE_UPDATE:
      OnUpdate(nullptr, static_cast<unsigned>(wParam), reinterpret_cast<CObject*>(lParam));
      return 0;
    case WM_TRACE_SAVEORDER:
      StoreColumnOrder(ShownOrder());
      Invalidate();
      return 0;
    case WM_TRACE_SHOWROW:
      m_list->EnsureVisible(static_cast<int>(wParam));
      return 0;
    default:
      return CView::OnMessage(message, wParam, lParam);
  }
}

TraceEvent_i* CTraceView::CurrentEvent() const {
  return EventOfRow(m_currentRow);
}

TraceEvent_i* CTraceView::EventOfRow(int row) const {
  return GetDocument() && m_rows.Has(row) ? m_rows.EventAt(row) : nullptr;
}

bool CTraceView::SetFilter(const CTraceFilter& filter, bool rebuild) {
  CTraceFilter before = std::exchange(m_filter, filter);
  const bool changedBefore = std::exchange(m_filterChanged, false);
  if (!rebuild || RebuildRows()) return true;
  m_filter = std::move(before);
  m_filterChanged = changedBefore;
  return false;
}

void CTraceView::Follow(TraceEvent_i* event) {
  if (!m_document.m_synchronize || !event) return;
  CTraceHint hint(event);
  m_document.UpdateAllViews(this, kHintFollow, &hint);
}

void CTraceView::OnSynchronize() {
  m_document.m_synchronize = !m_document.m_synchronize;
  Follow(EventOfRow(m_list->NextItem(-1, kRowFocused)));
}

// ---- what the list asks and tells

std::string CTraceView::RowListText(int row, ListColumn column) {
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
  if (oldState & kRowFocused) m_currentRow = -1;
  if (newState & kRowFocused) m_currentRow = row;
  if ((oldState ^ newState) & kRowFocused) ShowHits(false);
}

void CTraceView::OnRowClicked(int row) {
  Follow(EventOfRow(row));
}

void CTraceView::OnRowDoubleClicked(int) {
  OnCommand(ID_VIEW_PROPERTIES);
}

void CTraceView::OnRowListContextMenu(int screenXPx, int screenYPx) {
  if (auto* frame = dynamic_cast<CMDIChildWnd*>(GetParentFrame()))
    frame->OnContextMenu(screenXPx, screenYPx);
}

bool CTraceView::OnColumnResizing(ListColumn column, int widthPx) {
  const bool hidden = FlagOf(column) != 1;
  return hidden ? widthPx != 0 : widthPx < kMinimumDragWidthPx;
}

void CTraceView::OnColumnResized(ListColumn column, int widthPx) {
  // Kept: m_columnWidths stays, so that a column hidden and shown again has its older width.
  StoreColumnWidth(column.As<Column>(), widthPx);
  m_list->Header().SetColumnWidth(column, widthPx & kWidthMask);
}

void CTraceView::OnColumnsReordered() {
  // The header's order is final only when its drag has ended.
  PostMessage(WM_TRACE_SAVEORDER);
}

// ---- columns

void CTraceView::CreateColumns() {
  ListHeader& header = m_list->Header();
  const int charWidthPx = header.AverageCharWidth();
  for (const ColumnInfo& info : kColumns) {
    int widthPx = StoredColumnWidth(info.column);
    if (widthPx == 0)
      widthPx = std::max(info.widthChars * charWidthPx + kColumnMarginPx,
                         header.StringWidth(info.header));
    m_columnWidths[static_cast<std::size_t>(info.column)] = widthPx;
    header.InsertColumn({info.header, info.align, info.column == Column::Sev},
                        FlagOf(info.column) == 1 ? widthPx : 0);
  }
  const ColumnOrder order = ReadColumnOrder();
  header.SetColumnOrder(ListOrder(order.begin(), order.end()));
}

ColumnOrder CTraceView::ShownOrder() const {
  ColumnOrder order = {};
  std::ranges::copy(m_list->Header().GetColumnOrder(), order.begin());
  return order;
}

void CTraceView::ApplyActiveColumns() {
  ListHeader& header = m_list->Header();
  m_list->SetRedraw(false);
  for (const ColumnInfo& info : kColumns) {
    const int widthPx = header.ColumnWidth(info.column);
    const std::int32_t flag = FlagOf(info.column);
    if (flag == 0 && widthPx != 0)
      header.SetColumnWidth(info.column, 0);
    else if (flag == 1 && widthPx == 0)
      header.SetColumnWidth(info.column,
                            m_columnWidths[static_cast<std::size_t>(info.column)] & kWidthMask);
  }
  m_list->SetRedraw(true);
}

// As if the user had fitted each shown column by hand.
void CTraceView::OnFitColumns() {
  ListHeader& header = m_list->Header();
  m_list->SetRedraw(false);
  for (const ColumnInfo& info : kColumns) {
    if (header.ColumnWidth(info.column) == 0) continue;
    const int widthPx = header.FitWidth(info.column);
    if (!OnColumnResizing(info.column, widthPx)) OnColumnResized(info.column, widthPx);
  }
  m_list->SetRedraw(true);
}

void CTraceView::Invalidate() {
  m_list->SetRedraw(false);
  m_list->SetRedraw(true);
}

// ---- the main window's panes

void CTraceView::TellStatus() {
  TellRowCount(GetHost(), m_rows.Size());
  TellFiltered(GetHost(), m_filter.allTraces ? 0 : 1);
}
