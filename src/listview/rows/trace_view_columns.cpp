// The columns of the list view: their widths, their order, which of them show.
#include <algorithm>

#include "listview/rows/trace_view.h"

namespace {

constexpr int kMinimumDragWidthPx = 16;
constexpr int kColumnMarginPx = 16;
// A control keeps 16 bits of a width.
constexpr int kWidthMask = 0xFFFF;

std::int32_t FlagOf(ListColumn column) {
  return g_activeColumns[static_cast<std::size_t>(column.Index())];
}

}  // namespace

bool CTraceView::OnColumnResizing(ListColumn column, int widthPx) {
  const bool hidden = FlagOf(column) != 1;
  return hidden ? widthPx != 0 : widthPx < kMinimumDragWidthPx;
}

void CTraceView::OnColumnResized(ListColumn column, int widthPx) {
  // Kept: m_columnWidths is not changed: a column that is hidden and shown again has its older
  // width.
  StoreColumnWidth(column.As<Column>(), widthPx);
  m_list->Header().SetColumnWidth(column, widthPx & kWidthMask);
}

void CTraceView::OnColumnsReordered() {
  // The order of the header is final only when the drag has ended.
  PostMessage(WM_TRACE_SAVEORDER);
}

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

// The same as fitting each shown column by a double click.
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
