#include "listview/rows/ui/row_painter.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "listview/rows/ui/row_list_widget.h"
#include "listview/rows/ui/row_text.h"

namespace {

constexpr int kRowPaddingPx = 3;  // above and below the text
constexpr double kStripe = 0.035, kSoft = 0.5, kGrid = 0.07;

QColor Mixed(const QColor& a, const QColor& b, double share) {
  const auto mix = [share](int x, int y) { return static_cast<int>(x + (y - x) * share + 0.5); };
  return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}

}  // namespace

int RowPainter::RowHeight(const QFontMetrics& metrics) {
  return std::max(metrics.height() + 2 * kRowPaddingPx, SeverityIcons::kSizePx + 4);
}

RowPainter::Look RowPainter::LookOf(int row) const {
  // The active colours also without the keyboard: the selection stays plain to see.
  const QPalette palette = m_list.palette();
  const auto color = [&palette](QPalette::ColorRole role) {
    return palette.color(QPalette::Active, role);
  };
  Look look;
  if (m_list.GetItemState(row) & kRowSelected) {
    look.background = color(QPalette::Highlight);
    look.text = color(QPalette::HighlightedText);
  } else {
    // Stripes go by the number that a row keeps when others are trimmed before it.
    const bool stripe = (m_list.States().Base() + row) % 2 != 0;
    look.text = color(QPalette::Text);
    look.background = Mixed(color(QPalette::Base), look.text, stripe ? kStripe : 0);
  }
  look.soft = Mixed(look.background, look.text, kSoft);
  return look;
}

void RowPainter::Paint(QPainter& painter, const QRect& clip) {
  const QRect viewport = m_list.viewport()->rect();
  const int rowHeight = m_list.RowHeight();
  const int first = m_list.TopIndex() + clip.top() / rowHeight;
  const int last = std::min(m_list.TopIndex() + clip.bottom() / rowHeight, m_list.ItemCount() - 1);
  for (int row = first; row <= last; ++row) PaintRow(painter, row, clip);

  const int below = std::max(m_list.RowRect(std::max(last + 1, first)).top(), clip.top());
  painter.fillRect(QRect(QPoint(clip.left(), below), clip.bottomRight()),
                   m_list.palette().color(QPalette::Active, QPalette::Base));
  if (m_list.layoutDirection() == Qt::RightToLeft) return;
  painter.setPen(Mixed(m_list.palette().color(QPalette::Active, QPalette::Base),
                       m_list.palette().color(QPalette::Active, QPalette::Text), kGrid));
  for (const Column column : m_list.Columns().ShownColumns()) {
    const int edge = m_list.Columns().ColumnLeft(column) + m_list.Columns().ColumnWidth(column) - 1;
    if (edge >= clip.left() && edge <= clip.right())
      painter.drawLine(edge, std::max(below, viewport.top()), edge, clip.bottom());
  }
}

void RowPainter::PaintRow(QPainter& painter, int row, const QRect& clip) {
  const Look look = LookOf(row);
  const QRect bounds = m_list.RowRect(row);
  painter.fillRect(bounds, look.background);
  const QColor grid = Mixed(look.background, look.text, kGrid);
  for (const Column column : m_list.Columns().ShownColumns()) {
    const QRect cell = m_list.CellRect(row, column);
    if (cell.right() < clip.left() || cell.left() > clip.right()) continue;
    if (column == Column::Sev) {
      if (const int icon = m_list.IconOf(row); icon >= 0) {
        QRect square(0, 0, SeverityIcons::kSizePx, SeverityIcons::kSizePx);
        square.moveCenter(cell.center());
        if (cell.width() > square.width())
          painter.drawPixmap(square.topLeft(),
                             m_icons.Get(icon, m_list.viewport()->devicePixelRatioF()));
      }
    } else {
      PaintText(painter, look, cell, m_list.Columns().AlignOf(column),
                m_list.CellText(row, column));
    }
    painter.setPen(grid);
    painter.drawLine(cell.topRight(), cell.bottomRight());
  }
  if (m_list.GetItemState(row) & kRowFocused) PaintFocus(painter, look, bounds);
}

void RowPainter::PaintText(QPainter& painter, const Look& look, const QRect& cell,
                           ColumnAlign align, const QString& whole) const {
  if (whole.isEmpty()) return;
  const QFontMetrics metrics(m_list.font());
  const int room = cell.width() - 2 * RowHeader::kCellMarginPx;
  int width = metrics.horizontalAdvance(whole);
  QString text = whole;
  if (width > room) {
    text = metrics.elidedText(whole, Qt::ElideRight, room);
    width = metrics.horizontalAdvance(text);
    if (width > room) return;  // not even the dots fit
  }
  int x = cell.left() + RowHeader::kCellMarginPx;
  if (align == ColumnAlign::Right) x += room - width;
  if (align == ColumnAlign::Centre) x += (room - width) / 2;
  const int baseline = cell.top() + (cell.height() - metrics.height()) / 2 + metrics.ascent();
  painter.setPen(look.text);
  qsizetype begin = 0;
  for (qsizetype mark; (mark = text.indexOf(kLineEndMark, begin)) != -1; begin = mark + 1) {
    const QString line = text.mid(begin, mark - begin);
    painter.drawText(x, baseline, line);
    x += metrics.horizontalAdvance(line);
    painter.setPen(look.soft);
    painter.drawText(x, baseline, QString(kLineEndMark));
    x += metrics.horizontalAdvance(kLineEndMark);
    painter.setPen(look.text);
  }
  painter.drawText(x, baseline, begin == 0 ? text : text.mid(begin));
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
