// Properties of one line of text that a control gets from its owner: alignment, tint of the row,
// and the hits of a search.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>

// At most this much of a cell's text is shown, including the terminator.
inline constexpr int kCellBytes = 260;

enum class ColumnAlign { Left, Right, Centre };

// A pale colour behind a row that is not selected.
enum class RowTint { None, Warn, Error };

// Colours of a row that are not the list's own: 0xRRGGBB.
struct RowColours {
  std::uint32_t ink, ground;
  bool operator==(const RowColours&) const = default;
};

// What a user has said of a row: a stripe at its beginning, and a box at its end with the number
// and a sign for a note. Both stand over what the row shows.
struct RowMark {
  RowColours colours = {};  // of the box; the stripe has its ground
  int number = 0;           // 0: none, and no stripe
  std::string note = {};    // of several lines, cut; empty: none
};

// A range of bytes in a text.
struct HitRange {
  std::size_t begin, end;
  bool operator==(const HitRange&) const = default;
};
