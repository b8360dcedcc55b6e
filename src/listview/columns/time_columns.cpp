#include "listview/columns/time_columns.h"

#include <algorithm>

#include "settings/registry.h"

namespace {

constexpr char kTimesShownValue[] = "Time Columns";
constexpr char kTimeOrderValue[] = "Time Column Order";

using StoredOrder = std::array<std::int32_t, kAllColumnCount>;

// All in the order of their indexes, but those of times behind "Time".
constexpr StoredOrder kDefaultOrder = {0, 1, 2, 3, 4,  15, 16, 17, 5,
                                       6, 7, 8, 9, 10, 11, 14, 12, 13};

unsigned ShownBits() {
  return NtRegGet(HKEY_CURRENT_USER, kRegColumns, kTimesShownValue, 0U);
}

unsigned BitOf(Column column) {
  return 1U << (static_cast<int>(column) - kColumnCount);
}

bool IsPermutation(StoredOrder order) {
  std::ranges::sort(order);
  for (int index = 0; index < kAllColumnCount; ++index)
    if (order[static_cast<std::size_t>(index)] != index) return false;
  return true;
}

StoredOrder ReadOrder() {
  StoredOrder order;
  NtRegGetBuf(HKEY_CURRENT_USER, kRegColumns, kTimeOrderValue, order.data(), kDefaultOrder.data(),
              sizeof order);
  return IsPermutation(order) ? order : kDefaultOrder;
}

}  // namespace

bool IsTimeColumnShown(Column column) {
  return IsTimeColumn(column) && (ShownBits() & BitOf(column)) != 0;
}

bool IsAnyTimeColumnShown() {
  return std::ranges::any_of(kTimeColumns, IsTimeColumnShown);
}

void ShowTimeColumn(Column column, bool shown) {
  const unsigned others = ShownBits() & ~BitOf(column);
  NtRegPut(HKEY_CURRENT_USER, kRegColumns, kTimesShownValue, others | (shown ? BitOf(column) : 0U));
}

bool IsColumnShown(Column column) {
  if (IsTimeColumn(column)) return IsTimeColumnShown(column);
  return g_activeColumns[static_cast<std::size_t>(column)] == 1;
}

void ShowColumn(Column column, bool shown) {
  if (IsTimeColumn(column)) return ShowTimeColumn(column, shown);
  g_activeColumns[static_cast<std::size_t>(column)] = shown ? 1 : 0;
  StoreActiveColumns();
}

AllColumnOrder WithTimeColumns(const AllColumnOrder& fifteen) {
  const StoredOrder stored = ReadOrder();
  AllColumnOrder order = fifteen;
  auto place = order.begin();  // behind the column that stood before
  for (const std::int32_t column : stored) {
    if (column >= kColumnCount)
      place = order.insert(place, column);
    else
      place = std::ranges::find(order, column);
    ++place;
  }
  return order;
}

void StoreTimeColumnOrder(const AllColumnOrder& all) {
  StoredOrder order;
  if (all.size() != order.size()) return;
  std::ranges::copy(all, order.begin());
  NtRegPutBuf(HKEY_CURRENT_USER, kRegColumns, kTimeOrderValue, order.data(), sizeof order);
}

ColumnOrder WithoutTimeColumns(const AllColumnOrder& order) {
  ColumnOrder fifteen = {};
  std::size_t place = 0;
  for (const std::int32_t column : order)
    if (column < kColumnCount && place < fifteen.size()) fifteen[place++] = column;
  return fifteen;
}
