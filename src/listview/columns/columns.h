// The fifteen columns, and their values in the settings store: widths, order, version.
//
// Threads  Interface thread.
#pragma once

#include <array>
#include <optional>
#include <string_view>

#include "controls/text/cell_parts.h"
#include "listview/cells/cell_text.h"
#include "settings/globals.h"

struct ColumnInfo {
  Column column;
  const char* header;
  ColumnAlign align;
  int widthChars;       // used only when no width is stored
  unsigned optionsBox;  // check box of the Options dialog, 0 for none
};

extern const std::array<ColumnInfo, kColumnCount> kColumns;
// Also of the columns of times (time_columns.h) and of the column that no list has.
const ColumnInfo& InfoOf(Column column);
// Column indexes from left to right.
using ColumnOrder = std::array<std::int32_t, kColumnCount>;
inline constexpr ColumnOrder kDefaultColumnOrder = {0, 1, 2,  3,  4,  5,  6, 7,
                                                    8, 9, 10, 11, 14, 12, 13};

// By header, ignoring case; those of times and "Account" too.
std::optional<Column> ColumnByHeader(std::string_view header);

// Stores the flags of the fifteen, which are g_activeColumns.
void StoreActiveColumns();

// The stored width in pixels, 0 when there is none.
int StoredColumnWidth(Column column);
void StoreColumnWidth(Column column, int widthPx);
// The order for a new list view. The first call with a store that has no version, or the version of
// an older program, widens the stored order and writes the version, but not the order.
ColumnOrder ReadColumnOrder();
void StoreColumnOrder(const ColumnOrder& order);

// Counts how often the user has chosen the shown columns of all views.
unsigned ColumnChoices();
void CountColumnChoice();
