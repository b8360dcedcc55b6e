#include "controls/list/ui/row_painter.h"

#include <QFontMetrics>
#include <QPainter>
#include <algorithm>

#include "controls/list/ui/row_list_widget.h"
#include "controls/text/ui/font_runs.h"
#include "controls/text/ui/line_painter.h"
#include "controls/text/ui/mark_painter.h"
#include "controls/text/ui/row_text.h"
#include "docview/ui/mixed_color.h"

namespace {

constexpr int kRowPaddingPx = 3;  // above and below the text
constexpr int kEmptyGapPx = 6;    // between the lines of an empty list
constexpr qreal kEmptyScale = 1.15;
constexpr double kSoftToText = 0.4;  // its first line
constexpr int kEndMarkPx = 2;
constexpr double kEndMarkShare = 0.6, kFocusElsewhere = 0.55;
constexpr int kFocusMarkPx = 4;

QRect TextRoom(const QRect& cell) {
  return cell.adjusted(RowHeader::kCellMarginPx, 0, -RowHeader::kCellMarginPx, 0);
}

}  // namespace

int RowPainter::RowHeight(const QFontMetrics& metrics) {
  return std::max(metrics.height() + 2 * kRowPaddingPx, RowIcons::kSizePx + 4);
}

RowLook RowPainter::LookOfRow(int row) const {
  RowKind kind;
  kind.selected = (m_list.GetItemState(row) & kRowSelected) != 0;
  kind.keyboard = m_list.hasFocus();
  // Stripes use the number that a row keeps when rows before it are trimmed.
  kind.stripe = (m_list.States().Base() + row) % 2 != 0;
  if (!kind.selected) {
    kind.colours = m_list.Owner().RowListColours(row);
    kind.tint = m_list.Owner().RowListTint(row);
  }
  return LookOf(m_list.palette(), kind);
}

void RowPainter::Paint(QPainter& painter, const QRect& clip) const {
  Canvas canvas{painter, QFontMetrics(m_list.font()), {}};
  const RowHeader& header = m_list.Columns();
  for (const ListColumn column : header.ShownColumns()) {
    const Place place{column, header.AlignOf(column), header.ColumnLeft(column),
                      header.CellWidth(column)};
    if (place.left <= clip.right() && place.left + place.width > clip.left())
      canvas.places.push_back(place);
  }
  const int rowHeight = m_list.RowHeight();
  const int first = m_list.TopIndex() + clip.top() / rowHeight;
  const int last = std::min(m_list.TopIndex() + clip.bottom() / rowHeight, m_list.ItemCount() - 1);
  m_list.Owner().OnRowListPaint(true);
  for (int row = first; row <= last; ++row) PaintRow(canvas, row);
  m_list.Owner().OnRowListPaint(false);
  const int painted = std::max((last + 1 - m_list.TopIndex()) * rowHeight, clip.top());
  if (painted <= clip.bottom())
    PaintBelow(canvas, QRect(QPoint(clip.left(), painted), clip.bottomRight()));
  PaintEndMark(painter);
}

void RowPainter::PaintBelow(Canvas& canvas, const QRect& below) const {
  const RowLook look = LookOf(m_list.palette(), {});
  canvas.painter.fillRect(below, look.background);
  if (m_list.ItemCount() == 0 && PaintEmpty(canvas.painter)) return;
  for (const Place& place : canvas.places)
    canvas.painter.fillRect(place.left + place.width - 1, below.top(), 1, below.height(),
                            look.grid);
}

// The text for an empty list, in the middle; false when the owner has none.
bool RowPainter::PaintEmpty(QPainter& painter) const {
  const QStringList lines = QString::fromStdString(m_list.Owner().RowListEmptyText()).split(u'\n');
  if (lines.front().isEmpty()) return false;
  const RowLook look = LookOf(m_list.palette(), {});
  QFont large = m_list.font();
  large.setPointSizeF(large.pointSizeF() * kEmptyScale);
  const int largePx = QFontMetrics(large).height();
  const int smallPx = QFontMetrics(m_list.font()).height() + kEmptyGapPx;
  const QRect room = m_list.viewport()->rect();
  int top = room.center().y() - (largePx + smallPx * int(lines.size() - 1)) / 2;
  painter.setFont(large);
  painter.setPen(Mixed(look.soft, look.text, kSoftToText));
  for (const QString& line : lines) {
    const bool first = &line == &lines.front();
    const int height = first ? largePx : smallPx;
    painter.drawText(QRect(room.left(), top, room.width(), height),
                     Qt::AlignHCenter | (first ? Qt::AlignTop : Qt::AlignBottom), line);
    top += height;
    painter.setFont(m_list.font());
    painter.setPen(look.soft);
  }
  return true;
}

// A line below the last row of a list that is at its end.
void RowPainter::PaintEndMark(QPainter& painter) const {
  if (!m_list.ShowsEndMark() || m_list.ItemCount() == 0 || !m_list.IsAtEnd()) return;
  QRect mark = m_list.RowRect(m_list.ItemCount() - 1);
  const int bottom = std::min(mark.bottom() + kEndMarkPx, m_list.viewport()->rect().bottom());
  mark.setTop(bottom - kEndMarkPx + 1);
  mark.setBottom(bottom);
  const RowLook look = LookOf(m_list.palette(), {});
  painter.fillRect(mark, Mixed(look.background, look.accent, kEndMarkShare));
}

void RowPainter::PaintRow(Canvas& canvas, int row) const {
  const RowLook look = LookOfRow(row);
  const QRect bounds = m_list.RowRect(row);
  canvas.painter.fillRect(bounds, look.background);
  for (const Place& place : canvas.places) {
    const QRect cell(place.left, bounds.top(), place.width, bounds.height());
    if (m_list.Columns().ShowsIcon(place.column))
      PaintIcon(canvas, cell, m_list.IconOf(row));
    else
      PaintCell(canvas, look, cell, place, row);
    canvas.painter.fillRect(cell.right(), cell.top(), 1, cell.height(), look.grid);
  }
  const std::optional<RowMark> mark = m_list.Owner().RowListMark(row);
  const QRect view = m_list.viewport()->rect();
  const QRect shown(view.left(), bounds.top(), view.width(), bounds.height());
  if (mark) CoverBelowMark(canvas.painter, canvas.metrics, *mark, shown, look.background);
  if (m_list.GetItemState(row) & kRowFocused)
    PaintFocus(canvas.painter, look, bounds, m_list.GetItemState(row) & kRowSelected);
  if (mark) PaintRowMark(canvas.painter, canvas.metrics, *mark, shown);
}

void RowPainter::PaintCell(Canvas& canvas, const RowLook& look, const QRect& cell,
                           const Place& place, int row) const {
  const std::string bytes = m_list.Owner().RowListText(row, place.column);
  if (bytes.empty()) return;
  const CellLayout layout(canvas.metrics, TextRoom(cell), place.align, CellLine(bytes));
  layout.Paint(canvas.painter, look,
               LinePartsOf(bytes, m_list.Owner().RowListHits(row, place.column)));
}

QRect RowPainter::HitRect(int row, ListColumn column) const {
  const std::string bytes = m_list.Owner().RowListText(row, column);
  const auto hits = LinePartsOf(bytes, m_list.Owner().RowListHits(row, column));
  if (hits.empty()) return {};
  const QFontMetrics metrics(m_list.font());
  const RowHeader& header = m_list.Columns();
  return CellLayout(metrics, TextRoom(m_list.CellRect(row, column)), header.AlignOf(column),
                    CellLine(bytes))
      .RectOf(hits.front());
}

void RowPainter::PaintIcon(Canvas& canvas, const QRect& cell, int icon) const {
  QRect square(0, 0, RowIcons::kSizePx, RowIcons::kSizePx);
  if (icon < 0 || cell.width() < square.width()) return;
  square.moveCenter(cell.center());
  canvas.painter.drawPixmap(square.topLeft(),
                            m_list.Icons().Get(icon, m_list.viewport()->devicePixelRatioF()));
}

// A mark at the row's beginning and a frame; on a selected row the frame is thin.
void RowPainter::PaintFocus(QPainter& painter, const RowLook& look, const QRect& row,
                            bool selected) const {
  const QRect frame = row.intersected(m_list.viewport()->rect());
  const QColor color =
      m_list.hasFocus() ? look.accent : Mixed(look.background, look.accent, kFocusElsewhere);
  painter.setBrush(Qt::NoBrush);
  painter.setPen(selected && m_list.hasFocus() ? look.text : color);
  painter.drawRect(frame.adjusted(0, 0, -1, -1));
  if (selected) return;
  if (m_list.hasFocus()) painter.drawRect(frame.adjusted(1, 1, -2, -2));
  painter.fillRect(QRect(frame.left(), frame.top(), kFocusMarkPx, frame.height()), color);
}

int RowPainter::CellWidth(int row, ListColumn column) const {
  if (m_list.Columns().ShowsIcon(column)) return RowIcons::kSizePx + 8;
  return LineWidth(QFontMetrics(m_list.font()), m_list.CellText(row, column)) +
         2 * RowHeader::kCellMarginPx;
}
