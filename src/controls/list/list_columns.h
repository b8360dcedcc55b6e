// The columns of a list control, and their order.
//
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string>
#include <type_traits>
#include <vector>

#include "controls/text/cell_parts.h"

// A column, by the number of columns inserted before it. An owner may count its columns by an
// enumeration of its own.
class ListColumn {
 public:
  constexpr ListColumn(int index) : m_index(index) {}
  template <class Enum, class = std::enable_if_t<std::is_enum_v<Enum>>>
  constexpr ListColumn(Enum column) : m_index(static_cast<int>(column)) {}

  constexpr int Index() const { return m_index; }
  template <class Enum>
  constexpr Enum As() const {
    return static_cast<Enum>(m_index);
  }
  auto operator<=>(const ListColumn&) const = default;

 private:
  int m_index;
};

struct ListColumnInfo {
  std::string header;
  ColumnAlign align = ColumnAlign::Left;
  bool showsIcon = false;  // the row's icon, and no text
};

// Column indexes from left to right.
using ListOrder = std::vector<std::int32_t>;
// The valid order that a control of so many columns makes of `order`, so that no column is lost:
// the first of a repeated index keeps its place, repeats and indexes out of range are dropped, and
// missing ones come last, ascending.
ListOrder PermutationOf(const ListOrder& order, int columns);
