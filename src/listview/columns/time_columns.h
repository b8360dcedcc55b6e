// The columns of times behind the fifteen: which of them show, and where they stand. They have
// values of their own in the settings store, so that those of the fifteen stay what they are for
// every program that knows no others.
//
// Shape    "Time Columns" is a number with a bit for each shown column, the first one the lowest.
//          "Time Column Order" is the screen order of all eighteen. Widths stand under the headers.
// Errors   What is stored and cannot be is as if nothing were stored.
// Threads  Interface thread. All lists share the values.
#pragma once

#include <array>
#include <cstdint>
#include <vector>

#include "listview/columns/columns.h"

inline constexpr std::array kTimeColumns = {Column::Delta, Column::Since, Column::WallTime};
inline constexpr int kAllColumnCount = kColumnCount + static_cast<int>(kTimeColumns.size());

constexpr bool IsTimeColumn(Column column) {
  return static_cast<int>(column) >= kColumnCount && static_cast<int>(column) < kAllColumnCount;
}

bool IsTimeColumnShown(Column column);
bool IsAnyTimeColumnShown();
// Stores it; the caller then notifies the views.
void ShowTimeColumn(Column column, bool shown);
// Of any column of a list: also by the flags of the fifteen.
bool IsColumnShown(Column column);
void ShowColumn(Column column, bool shown);

// Column indexes from left to right.
using AllColumnOrder = std::vector<std::int32_t>;
// Of all eighteen: `fifteen` in their order, each column of times behind the column that it stood
// behind when the order was stored, or else behind "Time". REQUIRES: a permutation.
AllColumnOrder WithTimeColumns(const AllColumnOrder& fifteen);
// Stores the order of all. REQUIRES: a permutation of the eighteen.
void StoreTimeColumnOrder(const AllColumnOrder& all);
// The fifteen in their order.
ColumnOrder WithoutTimeColumns(const AllColumnOrder& order);
