#include "listview/rows/ui/row_text.h"

#include <algorithm>

#include "base/text.h"

namespace {

bool IsControl(QChar c) {
  return c.unicode() < 0x20 || (c.unicode() >= 0x7f && c.unicode() < 0xa0) ||
         c == QChar::LineSeparator || c == QChar::ParagraphSeparator;
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
