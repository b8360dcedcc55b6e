#include "controls/text/ui/font_runs.h"

#include <algorithm>

namespace {

constexpr QChar kDots = QChar(0x2026);

// Letters of the wide scripts, and high surrogates.
bool IsWide(QChar c) {
  const char16_t code = c.unicode();
  return (code >= 0x2e80 && code < 0xd7b0) || (code >= 0xd840 && code < 0xd88e) ||
         (code >= 0xf900 && code < 0xfb00) || (code >= 0xfe30 && code < 0xfe50) ||
         (code >= 0xff00 && code < 0xfff0);
}

bool IsRightToLeft(QChar c) {
  const char16_t code = c.unicode();
  return (code >= 0x0590 && code < 0x0900) || (code >= 0xfb1d && code < 0xfe00) ||
         (code >= 0xfe70 && code < 0xff00);
}

bool HasRuns(const QString& line) {
  return std::any_of(line.cbegin(), line.cend(), IsWide) &&
         std::none_of(line.cbegin(), line.cend(), IsRightToLeft);
}

}  // namespace

std::vector<qsizetype> FontRuns(const QString& line) {
  std::vector<qsizetype> ends;
  if (HasRuns(line)) {
    bool wide = IsWide(line.front());
    for (qsizetype i = 1; i < line.size(); ++i) {
      const QChar c = line[i];
      // A low surrogate, and marks over a letter, stay with the letter.
      if (line[i - 1].isHighSurrogate() || c.isMark() || IsWide(c) == wide) continue;
      ends.push_back(i);
      wide = IsWide(c);
    }
  }
  ends.push_back(line.size());
  return ends;
}

int LineWidth(const QFontMetrics& metrics, const QString& line) {
  int width = 0;
  qsizetype begin = 0;
  for (const qsizetype end : FontRuns(line)) {
    width += metrics.horizontalAdvance(
        begin == 0 && end == line.size() ? line : line.mid(begin, end - begin));
    begin = end;
  }
  return width;
}

QString ElidedLine(const QFontMetrics& metrics, const QString& line, int roomPx) {
  if (!HasRuns(line)) return metrics.elidedText(line, Qt::ElideRight, roomPx);
  if (LineWidth(metrics, line) <= roomPx) return line;
  // The longest beginning that fits together with the dots.
  qsizetype fits = 0, tooLong = line.size();
  while (fits + 1 < tooLong) {
    const qsizetype middle = fits + (tooLong - fits) / 2;
    (LineWidth(metrics, line.left(middle) + kDots) <= roomPx ? fits : tooLong) = middle;
  }
  if (fits > 0 && line[fits - 1].isHighSurrogate()) --fits;
  return line.left(fits) + kDots;
}
