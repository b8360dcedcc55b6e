#include "listview/rows/ui/row_painter.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "listview/rows/ui/mixed_color.h"
#include "listview/rows/ui/row_list_widget.h"
#include "listview/rows/ui/row_text.h"

namespace {

constexpr int kRowPaddingPx = 3;  // above and below the text
constexpr double kStripe = 0.035, kSoft = 0.5, kGrid = 0.07;

}  // namespace

int RowPainter::RowHeight(const QFontMetrics& metrics) {
  return std::max(metrics.height() + 2 * kRowPaddingPx, SeverityIcons::kSizePx + 4);
}

RowPainter::Look RowPainter::LookOf(int row) const {
  // The active colours also without the keyboard: the selection stays plain to see.
  const QPalette& palette = m_list.palette();
  Look look;
  if (m_list.GetItemState(row) & kRowSelected) {
    look.background = palette.color(QPalette::Active, QPalette::Highlight);
    look.text = palette.color(QPalette::Active, QPalette::HighlightedText);
  } else {
    // Stripes go by the number that a row keeps when others are trimmed before it.
    const bool stripe = (m_list.States().Base() + row) % 2 != 0;
    look.text = palette.color(QPalette::Active, QPalette::Text);
    look.background =
        Mixed(palette.color(QPalette::Active, QPalette::Base), look.text, stripe ? kStripe : 0);
  }
  look.soft = Mixed(look.background, look.text, kSoft);
  look.grid = Mixed(look.background, look.text, kGrid);
  return look;
}

void RowPainter::Paint(QPainter& painter, const QRect& clip) {
  Canvas canvas{painter, QFontMetrics(m_list.font()), {}};
  const RowHeader& header = m_list.Columns();
  for (const Column column : header.ShownColumns()) {
    const Place place{column, header.AlignOf(column), header.ColumnLeft(column),
                      header.CellWidth(column)};
    if (place.left <= clip.right() && place.left + place.width > clip.left())
      canvas.places.push_back(place);
  }
  const int rowHeight = m_list.RowHeight();
  const int first = m_list.TopIndex() + clip.top() / rowHeight;
  const int last = std::min(m_list.TopIndex() + clip.bottom() / rowHeight, m_list.ItemCount() - 1);
  for (int row = first; row <= last; ++row) PaintRow(canvas, row);
  const int painted = std::max((last + 1 - m_list.TopIndex()) * rowHeight, clip.top());
  if (painted <= clip.bottom())
    PaintBelow(canvas, QRect(QPoint(clip.left(), painted), clip.bottomRight()));
}

void RowPainter::PaintBelow(Canvas& canvas, const QRect& below) const {
  const QColor base = m_list.palette().color(QPalette::Active, QPalette::Base);
  canvas.painter.fillRect(below, base);
  const QColor text = m_list.palette().color(QPalette::Active, QPalette::Text);
  for (const Place& place : canvas.places)
    canvas.painter.fillRect(place.left + place.width - 1, below.top(), 1, below.height(),
                            Mixed(base, text, kGrid));
}

void RowPainter::PaintRow(Canvas& canvas, int row) {
  const Look look = LookOf(row);
  const QRect bounds = m_list.RowRect(row);
  canvas.painter.fillRect(bounds, look.background);
  for (const Place& place : canvas.places) {
    const QRect cell(place.left, bounds.top(), place.width, bounds.height());
    if (place.column == Column::Sev)
      PaintIcon(canvas, cell, m_list.IconOf(row));
    else
      PaintText(canvas, look, cell, place.align, m_list.CellText(row, place.column));
    canvas.painter.fillRect(cell.right(), cell.top(), 1, cell.height(), look.grid);
  }
  if (m_list.GetItemState(row) & kRowFocused) PaintFocus(canvas.painter, look, bounds);
}

void RowPainter::PaintIcon(Canvas& canvas, const QRect& cell, int icon) {
  QRect square(0, 0, SeverityIcons::kSizePx, SeverityIcons::kSizePx);
  if (icon < 0 || cell.width() < square.width()) return;
  square.moveCenter(cell.center());
  canvas.painter.drawPixmap(square.topLeft(),
                            m_icons.Get(icon, m_list.viewport()->devicePixelRatioF()));
}

void RowPainter::PaintText(Canvas& canvas, const Look& look, const QRect& cell, ColumnAlign align,
                           const QString& whole) {
  if (whole.isEmpty()) return;
  const int room = cell.width() - 2 * RowHeader::kCellMarginPx;
  int width = canvas.metrics.horizontalAdvance(whole);
  QString text = whole;
  if (width > room) {
    text = canvas.metrics.elidedText(whole, Qt::ElideRight, room);
    width = canvas.metrics.horizontalAdvance(text);
    if (width > room) return;  // not even the dots fit
  }
  int x = cell.left() + RowHeader::kCellMarginPx;
  if (align == ColumnAlign::Right) x += room - width;
  if (align == ColumnAlign::Centre) x += (room - width) / 2;
  const int y =
      cell.top() + (cell.height() - canvas.metrics.height()) / 2 + canvas.metrics.ascent();
  qsizetype begin = 0;
  for (qsizetype mark; (mark = text.indexOf(kLineEndMark, begin)) != -1; begin = mark + 1) {
    const QString line = text.mid(begin, mark - begin);
    canvas.painter.setPen(look.text);
    canvas.painter.drawText(x, y, line);
    x += canvas.metrics.horizontalAdvance(line);
    canvas.painter.setPen(look.soft);
    canvas.painter.drawText(x, y, QString(kLineEndMark));
    x += canvas.metrics.horizontalAdvance(kLineEndMark);
  }
  canvas.painter.setPen(look.text);
  canvas.painter.drawText(x, y, begin == 0 ? text : text.mid(begin));
}

void RowPainter::PaintFocus(QPainter& painter, const Look& look, const QRect& row) const {
  const QRect frame = row.intersected(m_list.viewport()->rect()).adjusted(0, 0, -1, -1);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(QPen(m_list.hasFocus() ? look.text : look.soft, 1, Qt::DotLine));
  painter.drawRect(frame);
}

int RowPainter::CellWidth(int row, Column column) const {
  if (column == Column::Sev) return SeverityIcons::kSizePx + 8;
  return QFontMetrics(m_list.font()).horizontalAdvance(m_list.CellText(row, column)) +
         2 * RowHeader::kCellMarginPx;
}
