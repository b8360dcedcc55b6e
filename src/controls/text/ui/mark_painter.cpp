#include "controls/text/ui/mark_painter.h"

#include <QPainter>

#include "controls/text/ui/row_text.h"

namespace {

constexpr int kStripePx = 4;  // the margin of a cell has no text
constexpr int kEdgePx = 2, kPadPx = 4, kRoundPx = 3;
constexpr int kSignLines = 3;

// A sheet with lines, as high as a capital letter.
int SignPx(const QFontMetrics& metrics) {
  return metrics.capHeight();
}

void PaintSign(QPainter& painter, const QRect& sign, const QColor& ink) {
  const int thick = std::max(sign.height() / 9, 1);
  for (int line = 0; line < kSignLines; ++line) {
    const int y = sign.top() + (sign.height() - thick) * line / (kSignLines - 1);
    const int width = line + 1 < kSignLines ? sign.width() : sign.width() * 2 / 3;
    painter.fillRect(sign.left(), y, width, thick, ink);
  }
}

}  // namespace

QRect MarkBox(const QFontMetrics& metrics, const RowMark& mark, const QRect& row) {
  int width = 2 * kPadPx;
  if (mark.number != 0) width += metrics.horizontalAdvance(QString::number(mark.number));
  if (!mark.note.empty()) width += SignPx(metrics) + (mark.number != 0 ? kPadPx : 0);
  const int height = std::min(metrics.height(), row.height() - kEdgePx);
  return {row.right() + 1 - kEdgePx - width, row.top() + (row.height() - height) / 2, width,
          height};
}

void CoverBelowMark(QPainter& painter, const QFontMetrics& metrics, const RowMark& mark,
                    const QRect& row, const QColor& ground) {
  const int left = MarkBox(metrics, mark, row).left() - kMarkGapPx;
  painter.fillRect(QRect(QPoint(left, row.top()), row.bottomRight()), ground);
}

void PaintRowMark(QPainter& painter, const QFontMetrics& metrics, const RowMark& mark,
                  const QRect& row) {
  const QColor ink(QRgb{mark.colours.ink}), own(QRgb{mark.colours.ground});
  if (mark.number != 0)
    painter.fillRect(QRect(row.left(), row.top(), kStripePx, row.height()), own);
  const QRect box = MarkBox(metrics, mark, row);
  painter.save();
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(Qt::NoPen);
  painter.setBrush(own);
  painter.drawRoundedRect(box, kRoundPx, kRoundPx);
  painter.restore();
  QRect inside = box.adjusted(kPadPx, 0, -kPadPx, 0);
  if (!mark.note.empty()) {
    const int size = SignPx(metrics);
    PaintSign(painter,
              QRect(inside.right() + 1 - size, box.center().y() - size / 2 + 1, size, size), ink);
    inside.setRight(inside.right() - size - kPadPx);
  }
  if (mark.number == 0) return;
  painter.setPen(ink);
  painter.drawText(inside, Qt::AlignCenter, QString::number(mark.number));
}

QString MarkInWords(const RowMark& mark) {
  QStringList words;
  if (mark.number != 0) words.append(QStringLiteral("Mark %1").arg(mark.number));
  if (!mark.note.empty())
    words.append("Note: " + CellLine(mark.note, mark.note.size()).replace(kLineEndMark, u' '));
  return words.join(", ");
}
