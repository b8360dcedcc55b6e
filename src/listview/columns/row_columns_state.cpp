// The columns of one list as a value, and those that it alone shows.
#include <algorithm>
#include <utility>

#include "base/text.h"
#include "listview/columns/row_columns.h"
#include "listview/columns/time_columns.h"

namespace {

std::size_t IndexOf(Column column) {
  return static_cast<std::size_t>(column);
}

// Of those that a list may have.
std::optional<Column> ColumnOf(const std::string& header) {
  for (int index = 0; index < kAllColumnCount; ++index) {
    const ColumnInfo& info = InfoOf(static_cast<Column>(index));
    if (CompareIgnoringCase(info.header, header) == 0) return info.column;
  }
  return std::nullopt;
}

std::vector<bool> ShownByProgram() {
  std::vector<bool> shown;
  for (int index = 0; index < kAllColumnCount; ++index)
    shown.push_back(IsColumnShown(static_cast<Column>(index)));
  return shown;
}

}  // namespace

bool RowColumns::IsShown(Column column) const {
  return m_own.empty() ? IsColumnShown(column) : m_own[IndexOf(column)];
}

std::vector<ViewColumn> RowColumns::State() const {
  const ListHeader& header = m_list.Header();
  std::vector<ViewColumn> columns;
  for (const std::int32_t index : header.GetColumnOrder()) {
    const auto column = static_cast<Column>(index);
    const int widthPx = header.ColumnWidth(column);
    columns.push_back({InfoOf(column).header,
                       widthPx != 0 ? widthPx : m_widths[IndexOf(column)] & kWidthMask,
                       widthPx != 0});
  }
  return columns;
}

std::vector<std::string> RowColumns::SetState(const std::vector<ViewColumn>& columns) {
  std::vector<std::string> unknown;
  std::vector<bool> own = ShownByProgram();
  for (std::size_t index = 0; index < own.size(); ++index)
    own[index] = IsShown(static_cast<Column>(index));
  const std::vector<bool> before = own;
  ListOrder order;
  std::vector<int> widths;
  for (const ViewColumn& each : columns) {
    const std::optional<Column> column = ColumnOf(each.header);
    if (!column) {
      unknown.push_back(each.header);
      continue;
    }
    own[IndexOf(*column)] = each.shown;
    order.push_back(static_cast<std::int32_t>(*column));
    widths.push_back(each.widthPx);
  }
  if (std::ranges::find(own, true) == own.end()) own = before;
  const auto times = own.begin() + kColumnCount;
  m_list.SetRedraw(false);
  if (!HasTimes() && std::find(times, own.end(), true) != own.end()) InsertTimes();
  for (std::size_t i = 0; i < order.size(); ++i) {
    const auto index = static_cast<std::size_t>(order[i]);
    if (index < m_widths.size() && widths[i] > 0) m_widths[index] = widths[i];
  }
  for (std::size_t index = 0; index < m_widths.size(); ++index) {
    const int now = m_list.Header().ColumnWidth(static_cast<int>(index));
    const bool said = std::ranges::find(order, static_cast<std::int32_t>(index)) != order.end();
    if (said || (now != 0) != own[index])
      m_list.Header().SetColumnWidth(static_cast<int>(index),
                                     own[index] ? m_widths[index] & kWidthMask : 0);
  }
  m_list.Header().SetColumnOrder(order);
  m_program = ShownByProgram();
  m_choices = ColumnChoices();
  m_own = own == m_program ? std::vector<bool>() : std::move(own);
  m_list.SetRedraw(true);
  return unknown;
}

std::vector<ViewColumn> RowColumns::Standard() const {
  const ColumnOrder fifteen = ReadColumnOrder();
  ListOrder order = PermutationOf(ListOrder(fifteen.begin(), fifteen.end()), kColumnCount);
  if (HasTimes()) order = WithTimeColumns(order);
  std::vector<ViewColumn> columns;
  for (const std::int32_t index : order) {
    const ColumnInfo& info = InfoOf(static_cast<Column>(index));
    columns.push_back({info.header, StandardWidth(info), IsColumnShown(info.column)});
  }
  return columns;
}

ColumnFlags RowColumns::Flags() const {
  ColumnFlags flags = g_activeColumns;
  for (std::size_t index = 0; index < flags.size() && !m_own.empty(); ++index)
    flags[index] = m_own[index];
  return flags;
}

// Columns that are chosen in Options hold for all lists. A column that is switched elsewhere is
// switched here too.
void RowColumns::FollowProgram() {
  if (m_own.empty()) return;
  const std::vector<bool> now = ShownByProgram();
  for (std::size_t index = 0; index < now.size(); ++index)
    if (now[index] != m_program[index]) m_own[index] = now[index];
  m_program = now;
  if (m_choices != ColumnChoices() || m_own == m_program) m_own.clear();
}

// ---- the menu of the header

void RowColumns::OpenMenu(Host& host, std::optional<ListColumn> column, int screenXPx,
                          int screenYPx, std::function<void()> changed) {
  HeaderMenu::Actions actions;
  actions.isShown = [this](Column one) { return IsShown(one); };
  actions.show = [this, changed = std::move(changed)](Column one, bool shown) {
    Show(one, shown);
    changed();
  };
  actions.fit = [this](Column one) { FitOne(one); };
  actions.fitAll = [this] { Fit(); };
  actions.storeOrder = [this] { StoreOrder(); };
  m_menu = std::make_unique<HeaderMenu>(host, m_list.Header(), std::move(actions));
  m_menu->Open(column, screenXPx, screenYPx);
}

// What the program says may not change by it, where this list shows other columns.
void RowColumns::Show(Column column, bool shown) {
  if (!m_own.empty()) m_own[IndexOf(column)] = shown;
  ShowColumn(column, shown);
}
