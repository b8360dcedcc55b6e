#include "listview/columns/row_columns.h"

#include <algorithm>

#include "listview/columns/time_columns.h"

namespace {

constexpr int kMinimumDragWidthPx = 16;
constexpr int kColumnMarginPx = 16;

}  // namespace

void RowColumns::Create() {
  for (const ColumnInfo& info : kColumns) Insert(info);
  const ColumnOrder order = ReadColumnOrder();
  m_list.Header().SetColumnOrder(ListOrder(order.begin(), order.end()));
  if (IsAnyTimeColumnShown()) InsertTimes();
}

void RowColumns::Insert(const ColumnInfo& info) {
  const int widthPx = StandardWidth(info);
  m_widths.push_back(widthPx);
  m_list.Header().InsertColumn({info.header, info.align, info.column == Column::Sev},
                               IsShown(info.column) ? widthPx : 0);
}

int RowColumns::StandardWidth(const ColumnInfo& info) const {
  const int widthPx = StoredColumnWidth(info.column);
  if (widthPx != 0) return widthPx;
  const ListHeader& header = m_list.Header();
  return std::max(info.widthChars * header.AverageCharWidth() + kColumnMarginPx,
                  header.StringWidth(info.header));
}

void RowColumns::InsertTimes() {
  const AllColumnOrder order = WithTimeColumns(m_list.Header().GetColumnOrder());
  for (const Column column : kTimeColumns) Insert(InfoOf(column));
  m_list.Header().SetColumnOrder(order);
}

void RowColumns::ShowAndHide() {
  ListHeader& header = m_list.Header();
  m_list.SetRedraw(false);
  FollowProgram();
  if (!HasTimes() && IsAnyTimeColumnShown()) InsertTimes();
  for (std::size_t index = 0; index < m_widths.size(); ++index) {
    const auto column = static_cast<Column>(index);
    const int widthPx = header.ColumnWidth(column);
    // Kept: a flag that is neither 0 nor 1 changes nothing.
    const bool hide = index < kColumns.size() ? Flags()[index] == 0 : !IsShown(column);
    if (hide && widthPx != 0)
      header.SetColumnWidth(column, 0);
    else if (IsShown(column) && widthPx == 0)
      header.SetColumnWidth(column, m_widths[index] & kWidthMask);
  }
  m_list.SetRedraw(true);
}

void RowColumns::Fit() {
  m_list.SetRedraw(false);
  for (std::size_t index = 0; index < m_widths.size(); ++index)
    if (m_list.Header().ColumnWidth(static_cast<Column>(index)) != 0)
      FitOne(static_cast<Column>(index));
  m_list.SetRedraw(true);
}

void RowColumns::FitOne(Column column) {
  const int widthPx = m_list.Header().FitWidth(column);
  if (!Refuses(column, widthPx)) TakeWidth(column, widthPx);
}

bool RowColumns::Refuses(ListColumn column, int widthPx) const {
  return IsShown(column.As<Column>()) ? widthPx < kMinimumDragWidthPx : widthPx != 0;
}

void RowColumns::TakeWidth(ListColumn column, int widthPx) {
  // Kept: m_widths is not changed: a column that is hidden and shown again has its older width.
  StoreColumnWidth(column.As<Column>(), widthPx);
  m_list.Header().SetColumnWidth(column, widthPx & kWidthMask);
}

void RowColumns::StoreOrder() const {
  StoreColumnOrder(Order());
  if (HasTimes()) StoreTimeColumnOrder(m_list.Header().GetColumnOrder());
}

ColumnOrder RowColumns::Order() const {
  return WithoutTimeColumns(m_list.Header().GetColumnOrder());
}
