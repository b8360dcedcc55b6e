// What a cell's bytes look like in one line.
#pragma once

#include <QString>
#include <string_view>
#include <vector>

#include "controls/text/cell_parts.h"

// Stands for a line end; painted softer than the text.
inline constexpr QChar kLineEndMark = QChar(0x23CE);

// At most so many bytes, cut where a character ends; U+FFFD for what is no UTF-8.
QString CellString(std::string_view bytes, std::size_t most = kCellBytes - 1);
// The same in one line: a mark for each line end, a blank for other control characters.
QString CellLine(std::string_view bytes, std::size_t most = kCellBytes - 1);

// Characters of a line.
struct LinePart {
  qsizetype first = 0, count = 0;
  qsizetype End() const { return first + count; }
  bool operator==(const LinePart&) const = default;
};

// Where those bytes stand in CellLine of them. A character that is hit in its middle counts whole.
std::vector<LinePart> LinePartsOf(std::string_view bytes, const std::vector<HitRange>& hits,
                                  std::size_t most = kCellBytes - 1);
