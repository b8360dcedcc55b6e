#include "listview/columns/columns.h"

#include <cstdint>
#include <limits>

#include "base/text.h"
#include "settings/registry.h"

const std::array<ColumnInfo, kColumnCount> kColumns = {{
    {Column::Sev, "Sev", ColumnAlign::Centre, 4, 1159},
    {Column::Count, "Count", ColumnAlign::Right, 7, 1041},
    {Column::TicCount, "Tic Count", ColumnAlign::Right, 18, 1072},
    {Column::TicDiff, "Tic Diff", ColumnAlign::Right, 18, 1078},
    {Column::Time, "Time", ColumnAlign::Left, 18, 1042},
    {Column::Machine, "Machine", ColumnAlign::Left, 9, 1044},
    {Column::Application, "Application", ColumnAlign::Left, 9, 1045},
    {Column::Component, "Component", ColumnAlign::Left, 9, 1066},
    {Column::Category, "Category", ColumnAlign::Left, 9, 1067},
    {Column::Attributes, "Attributes", ColumnAlign::Left, 10, 1158},
    {Column::Pid, "PID", ColumnAlign::Left, 4, 1046},
    {Column::Tid, "TID", ColumnAlign::Left, 4, 1047},
    {Column::Trace, "Trace", ColumnAlign::Left, 80, 0},
    {Column::Source, "Source", ColumnAlign::Left, 20, 0},
    // Kept: the dialog's box "Trace" belongs to this column and is disabled, see COptionsDlg.
    {Column::Stack, "Stack", ColumnAlign::Left, 20, 1071},
}};

namespace {

constexpr ColumnInfo kTimeColumnInfos[] = {
    {Column::Delta, "Delta", ColumnAlign::Right, 14, 0},
    {Column::Since, "Since", ColumnAlign::Right, 16, 0},
    {Column::WallTime, "Wall Time", ColumnAlign::Left, 32, 0},
};
constexpr ColumnInfo kAccountColumn = {Column::Account, "Account", ColumnAlign::Left, 9, 0};
unsigned columnChoices = 0;

constexpr char kOrderValue[] = "Column Order";
constexpr char kVersionValue[] = "Version";
constexpr char kBeforeVersions[] = "2.x";  // the version of a store without one
constexpr char kThisVersion[] = "3.1.0";   // of what is stored, not the program's

// The stored form is little-endian, like the machines that this program runs on.
static_assert(sizeof(ColumnOrder) == 60);

// Orders of older versions lack the later columns.
ColumnOrder Widened(ColumnOrder order) {
  if (order[12] == 12) {
    order[12] = 14;
    order[13] = 12;
    order[14] = 13;
  } else {
    // Kept: the default order, whose entry 12 is 14, gets 14 twice here and loses 12. The control
    // adds it again.
    order[13] = 13;
    order[14] = 14;
  }
  return order;
}

}  // namespace

const ColumnInfo& InfoOf(Column column) {
  if (column == Column::Account) return kAccountColumn;
  const auto index = static_cast<std::size_t>(column);
  return index < kColumns.size() ? kColumns[index] : kTimeColumnInfos[index - kColumns.size()];
}

std::optional<Column> ColumnByHeader(std::string_view header) {
  for (const ColumnInfo& column : kColumns)
    if (CompareIgnoringCase(column.header, header) == 0) return column.column;
  for (const ColumnInfo& column : kTimeColumnInfos)
    if (CompareIgnoringCase(column.header, header) == 0) return column.column;
  if (CompareIgnoringCase(kAccountColumn.header, header) == 0) return kAccountColumn.column;
  return std::nullopt;
}

void StoreActiveColumns() {
  NtRegPutBuf(HKEY_CURRENT_USER, kRegColumns, "Active Columns", g_activeColumns.data(),
              sizeof g_activeColumns);
}

int StoredColumnWidth(Column column) {
  const unsigned width = NtRegGet(HKEY_CURRENT_USER, kRegColumns, InfoOf(column).header, 0u);
  // A store may contain any number; no screen is wider than 16 bits can count.
  return width > std::numeric_limits<std::uint16_t>::max() ? 0 : static_cast<int>(width);
}

void StoreColumnWidth(Column column, int widthPx) {
  NtRegPut(HKEY_CURRENT_USER, kRegColumns, InfoOf(column).header, static_cast<unsigned>(widthPx));
}

ColumnOrder ReadColumnOrder() {
  const std::string version =
      NtRegGet(HKEY_CURRENT_USER, kRegProgram, kVersionValue, kBeforeVersions);
  ColumnOrder order;
  NtRegGetBuf(HKEY_CURRENT_USER, kRegColumns, kOrderValue, order.data(), kDefaultColumnOrder.data(),
              sizeof order);
  if (version != kBeforeVersions) return order;
  NtRegPut(HKEY_CURRENT_USER, kRegProgram, kVersionValue, kThisVersion);
  return Widened(order);
}

void StoreColumnOrder(const ColumnOrder& order) {
  NtRegPutBuf(HKEY_CURRENT_USER, kRegColumns, kOrderValue, order.data(), sizeof order);
}

unsigned ColumnChoices() {
  return columnChoices;
}

void CountColumnChoice() {
  ++columnChoices;
}
