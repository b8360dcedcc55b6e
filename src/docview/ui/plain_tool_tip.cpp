#include "docview/ui/plain_tool_tip.h"

#include <QStringList>
#include <QTextDocument>

namespace {

constexpr int kToolTipLetters = 60;

// The end of the first line of a longer text.
int BreakIn(const QString& line, int letters) {
  const int blank = static_cast<int>(line.lastIndexOf(u' ', letters));
  if (blank > 0) return blank + 1;
  const int slash = static_cast<int>(line.lastIndexOf(u'/', letters - 1));
  if (slash > 0) return slash + 1;
  return line.at(letters).isLowSurrogate() ? letters - 1 : letters;
}

}  // namespace

QString InLinesOf(const QString& text, int letters) {
  QStringList lines;
  for (QString line : text.split(u'\n')) {
    while (line.size() > letters) {
      const int end = BreakIn(line, letters);
      lines << line.left(end).trimmed();
      line.remove(0, end);
    }
    lines << line;
  }
  return lines.join(u'\n');
}

QString PlainToolTip(const QString& text) {
  QString lines = InLinesOf(text, kToolTipLetters);
  if (!Qt::mightBeRichText(lines)) return lines;
  return QStringLiteral("<p style='white-space:pre'>") + lines.toHtmlEscaped() +
         QStringLiteral("</p>");
}
