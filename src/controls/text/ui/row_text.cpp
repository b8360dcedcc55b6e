#include "controls/text/ui/row_text.h"

#include <algorithm>

#include "base/text.h"

namespace {

bool IsControl(QChar c) {
  return c.unicode() < 0x20 || (c.unicode() >= 0x7f && c.unicode() < 0xa0) ||
         c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
}

// Bytes inside a character of the line: a continuation byte, or the feed after a carriage return.
bool IsInside(std::string_view bytes, std::size_t at) {
  if (at == 0 || at >= bytes.size()) return false;
  return (bytes[at] & 0xc0) == 0x80 || (bytes[at - 1] == '\r' && bytes[at] == '\n');
}

}  // namespace

QString CellString(std::string_view bytes, std::size_t most) {
  bytes = CutUtf8(bytes, most);
  return QString::fromUtf8(bytes.data(), static_cast<qsizetype>(bytes.size()));
}

QString CellLine(std::string_view bytes, std::size_t most) {
  QString text = CellString(bytes, most);
  if (std::none_of(text.cbegin(), text.cend(), IsControl)) return text;
  text.replace(QLatin1String("\r\n"), QLatin1String("\n"));
  for (QChar& c : text) {
    if (!IsControl(c)) continue;
    const bool endsLine =
        c == u'\n' || c == u'\r' || c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
    c = endsLine ? kLineEndMark : QChar(u' ');
  }
  return text;
}

std::vector<LinePart> LinePartsOf(std::string_view bytes, const std::vector<HitRange>& hits,
                                  std::size_t most) {
  bytes = CutUtf8(bytes, most);
  std::size_t byte = 0;
  qsizetype unit = 0;
  const auto unitOf = [&](std::size_t at) {
    const std::string_view between = bytes.substr(byte, at - byte);
    // The library removes a byte order mark from the front of a converted text.
    if (byte > 0 && between.substr(0, 3) == "\xef\xbb\xbf") ++unit;
    unit += CellLine(between, between.size()).size();
    byte = at;
    return unit;
  };
  std::vector<LinePart> parts;
  for (const HitRange& hit : hits) {
    std::size_t begin = std::max(std::min(hit.begin, bytes.size()), byte);
    std::size_t end = std::min(hit.end, bytes.size());
    while (begin > byte && IsInside(bytes, begin)) --begin;
    while (IsInside(bytes, end)) ++end;
    if (begin >= end) continue;
    const qsizetype first = unitOf(begin);
    parts.push_back({first, unitOf(end) - first});
  }
  return parts;
}
