// What a control and its owner tell each other of one line of text: how it is aligned, how its row
// is tinted, and which parts of it a search has found.
#pragma once

#include <cstddef>

// With the terminator: so much of a cell's text is shown.
inline constexpr int kCellBytes = 260;

enum class ColumnAlign { Left, Right, Centre };

// A pale colour behind a row that is not selected.
enum class RowTint { None, Warn, Error };

// Places in the bytes of a text.
struct HitRange {
  std::size_t begin, end;
  bool operator==(const HitRange&) const = default;
};
