#include "listview/rows/ui/line_painter.h"

#include <QPainter>
#include <algorithm>

#include "listview/rows/ui/font_runs.h"
#include "listview/rows/ui/row_text.h"

namespace {

constexpr int kHitInsetPx = 2;  // above and below a tinted text

// Up to where a piece that begins at `begin` looks the same.
qsizetype PieceEnd(const QString& text, qsizetype begin, qsizetype runEnd, const LinePart& hit) {
  if (text[begin] == kLineEndMark) return begin + 1;
  qsizetype end = runEnd;
  if (const qsizetype mark = text.indexOf(kLineEndMark, begin); mark != -1)
    end = std::min(end, mark);
  if (begin < hit.first)
    end = hit.count > 0 ? std::min(end, hit.first) : end;
  else if (begin < hit.End())
    end = std::min(end, hit.End());
  return end;
}

}  // namespace

void PaintLine(QPainter& painter, const QFontMetrics& metrics, const RowLook& look,
               const QRect& room, ColumnAlign align, const QString& whole, LinePart hit) {
  if (whole.isEmpty()) return;
  int width = LineWidth(metrics, whole);
  QString text = whole;
  if (width > room.width()) {
    text = ElidedLine(metrics, whole, room.width());
    width = LineWidth(metrics, text);
    if (width > room.width()) return;
  }
  int x = room.left();
  if (align == ColumnAlign::Right) x += room.width() - width;
  if (align == ColumnAlign::Centre) x += (room.width() - width) / 2;
  const int y = room.top() + (room.height() - metrics.height()) / 2 + metrics.ascent();
  const std::vector<qsizetype> runs = FontRuns(text);
  auto run = runs.begin();
  for (qsizetype begin = 0; begin < text.size();) {
    while (*run <= begin) ++run;
    const qsizetype end = PieceEnd(text, begin, *run, hit);
    const QString piece = text.mid(begin, end - begin);
    const int pieceWidth = metrics.horizontalAdvance(piece);
    const bool found = begin >= hit.first && begin < hit.End();
    if (found)
      painter.fillRect(
          QRect(x, room.top() + kHitInsetPx, pieceWidth, room.height() - 2 * kHitInsetPx),
          look.hit);
    const bool mark = piece == kLineEndMark;
    painter.setPen(mark ? look.soft : found ? look.hitText : look.text);
    painter.drawText(x, y, piece);
    x += pieceWidth;
    begin = end;
  }
}
