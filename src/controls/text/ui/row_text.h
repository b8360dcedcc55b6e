// Converts a cell's bytes to one line of text.
#pragma once

#include <QString>
#include <string_view>
#include <vector>

#include "controls/text/cell_parts.h"

// The mark for a line end; painted softer than the text.
inline constexpr QChar kLineEndMark = QChar(0x23CE);

// At most so many bytes, cut between characters; U+FFFD for malformed UTF-8.
QString CellString(std::string_view bytes, std::size_t most = kCellBytes - 1);
// The same in one line: a mark for each line end, a blank for other control characters.
QString CellLine(std::string_view bytes, std::size_t most = kCellBytes - 1);

// Characters of a line.
struct LinePart {
  qsizetype first = 0, count = 0;
  qsizetype End() const { return first + count; }
  bool operator==(const LinePart&) const = default;
};

// The parts of CellLine for these hits. A character that is partly hit counts as a whole.
std::vector<LinePart> LinePartsOf(std::string_view bytes, const std::vector<HitRange>& hits,
                                  std::size_t most = kCellBytes - 1);
