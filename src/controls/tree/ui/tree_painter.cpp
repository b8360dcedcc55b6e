#include "controls/tree/ui/tree_painter.h"

#include <QPainter>
#include <algorithm>

#include "controls/text/ui/font_runs.h"
#include "controls/text/ui/line_painter.h"
#include "controls/text/ui/mark_painter.h"
#include "controls/text/ui/row_text.h"
#include "controls/tree/ui/tree_widget.h"
#include "docview/ui/mixed_color.h"

namespace {

constexpr int kRowPaddingPx = 2;  // above and below the text
constexpr int kLabelMarginPx = 4;
// The shown part of a label of up to 65,535 bytes; the properties show all of it.
constexpr std::size_t kLabelBytes = 1024;
constexpr int kButtonPx = 11;
constexpr double kSoft = 0.5, kLine = 0.3;

QRect TextRoom(const QRect& label) {
  return label.adjusted(kLabelMarginPx, 0, -kLabelMarginPx, 0);
}

}  // namespace

int TreePainter::RowHeight(const QFontMetrics& metrics) {
  return std::max(metrics.height() + 2 * kRowPaddingPx, kButtonPx + 6);
}

QString TreePainter::LineOf(const std::string& text) {
  return CellLine(text, kLabelBytes);
}

TreePainter::Look TreePainter::LookOf() const {
  const QPalette& palette = m_tree.palette();
  Look look;
  look.label = ::LookOf(palette, {});
  look.selected = ::LookOf(palette, {.selected = true, .keyboard = m_tree.hasFocus()});
  look.base = look.label.background;
  look.text = look.label.text;
  look.soft = Mixed(look.base, look.text, kSoft);
  look.line = Mixed(look.base, look.text, kLine);
  look.button = Mixed(look.base, look.text, 0.75);
  return look;
}

int TreePainter::Step() const {
  return std::max(m_tree.RowHeight(), kButtonPx + 8);
}

int TreePainter::LabelX(int depth) const {
  return (depth + 1) * Step();
}

QRect TreePainter::ButtonRect(int depth, const QRect& row) const {
  const int middleX = depth * Step() + Step() / 2 - m_tree.LeftPx();
  return QRect(middleX - kButtonPx / 2, row.top() + (row.height() - kButtonPx) / 2, kButtonPx,
               kButtonPx);
}

QRect TreePainter::LabelRect(TreeItem item, std::int64_t row) const {
  const QString text = LineOf(m_tree.Owner().TreeItemText(m_tree.ItemData(item)));
  const QRect bounds = m_tree.RowRect(row);
  return QRect(LabelX(m_tree.Items().Depth(item)) - m_tree.LeftPx(), bounds.top(),
               LineWidth(m_tree.fontMetrics(), text) + 2 * kLabelMarginPx, bounds.height());
}

QRect TreePainter::HitRect(TreeItem item, std::int64_t row) const {
  const std::string text = m_tree.Owner().TreeItemText(m_tree.ItemData(item));
  const auto hits = LinePartsOf(text, m_tree.Owner().TreeTextHits(text), kLabelBytes);
  if (hits.empty()) return {};
  const QFontMetrics metrics = m_tree.fontMetrics();
  return CellLayout(metrics, TextRoom(LabelRect(item, row)), ColumnAlign::Left, LineOf(text))
      .RectOf(hits.front());
}

TreePart TreePainter::PartAt(const QPoint& point) const {
  const TreeItem item = m_tree.ItemAt(point.y());
  if (!item) return TreePart::None;
  const std::int64_t row = m_tree.TopRow() + point.y() / m_tree.RowHeight();
  if (LabelRect(item, row).contains(point)) return TreePart::Label;
  // The whole square of the level is easier to hit than the button alone.
  const int left = m_tree.Items().Depth(item) * Step() - m_tree.LeftPx();
  const bool button =
      (m_tree.ItemState(item) & kTreeHasChildren) && point.x() >= left && point.x() < left + Step();
  return button ? TreePart::Button : TreePart::None;
}

int TreePainter::WidthOnView() const {
  int width = 0;
  for (std::int64_t row = m_tree.TopRow(); row < m_tree.TopRow() + m_tree.RowsOnView(); ++row)
    width = std::max(width, LabelRect(m_tree.Items().At(row), row).right() + m_tree.LeftPx());
  return width + kLabelMarginPx;
}

void TreePainter::Paint(QPainter& painter, const QRect& clip) const {
  const Look look = LookOf();
  painter.fillRect(clip, look.base);
  const int height = m_tree.RowHeight();
  for (int y = clip.top() / height * height; y <= clip.bottom(); y += height) {
    const TreeItem item = m_tree.ItemAt(y);
    if (!item) return;
    PaintRow(painter, look, item, QRect(0, y, m_tree.viewport()->width(), height));
  }
}

void TreePainter::PaintRow(QPainter& painter, const Look& look, TreeItem item,
                           const QRect& row) const {
  const int depth = m_tree.Items().Depth(item);
  PaintLines(painter, look, item, depth, row);
  const unsigned state = m_tree.ItemState(item);
  if (state & kTreeHasChildren)
    PaintButton(painter, look, ButtonRect(depth, row), state & kTreeExpanded);
  PaintLabel(painter, look, item, LabelRect(item, m_tree.TopRow() + row.top() / row.height()));
  const std::optional<RowMark> mark = m_tree.Owner().TreeItemMark(m_tree.ItemData(item));
  if (!mark) return;
  CoverBelowMark(painter, m_tree.fontMetrics(), *mark, row, look.base);
  PaintRowMark(painter, m_tree.fontMetrics(), *mark, row);
}

// A vertical line from each parent that has further items below, and a horizontal one to the label.
void TreePainter::PaintLines(QPainter& painter, const Look& look, TreeItem item, int depth,
                             const QRect& row) const {
  const int step = Step(), left = m_tree.LeftPx();
  const int middleY = row.top() + row.height() / 2;
  const auto levelX = [&](int level) { return level * step + step / 2 - left; };
  painter.fillRect(levelX(depth), middleY, LabelX(depth) - left - levelX(depth), 1, look.line);
  const bool above = depth > 0 || m_tree.Walk(item, TreeStep::PreviousSibling);
  if (above) painter.fillRect(levelX(depth), row.top(), 1, middleY - row.top(), look.line);
  TreeItem each = item;
  for (int level = depth; each && levelX(level) >= -step;
       --level, each = m_tree.Walk(each, TreeStep::Parent)) {
    if (levelX(level) > row.right() || !m_tree.Walk(each, TreeStep::NextSibling)) continue;
    const int top = level == depth ? middleY : row.top();
    painter.fillRect(levelX(level), top, 1, row.bottom() + 1 - top, look.line);
  }
}

void TreePainter::PaintButton(QPainter& painter, const Look& look, const QRect& button,
                              bool open) const {
  painter.fillRect(button, look.soft);
  painter.fillRect(button.adjusted(1, 1, -1, -1), look.base);
  const QPoint middle = button.center();
  painter.fillRect(button.left() + 3, middle.y(), kButtonPx - 6, 1, look.button);
  if (!open) painter.fillRect(middle.x(), button.top() + 3, 1, kButtonPx - 6, look.button);
}

void TreePainter::PaintLabel(QPainter& painter, const Look& look, TreeItem item,
                             const QRect& label) const {
  const bool selected = item == m_tree.SelectedItem();
  const RowLook& colors = selected ? look.selected : look.label;
  if (selected) painter.fillRect(label, colors.background);
  const std::string text = m_tree.Owner().TreeItemText(m_tree.ItemData(item));
  const QFontMetrics metrics = m_tree.fontMetrics();
  const CellLayout layout(metrics, TextRoom(label), ColumnAlign::Left, LineOf(text));
  layout.Paint(painter, colors, LinePartsOf(text, m_tree.Owner().TreeTextHits(text), kLabelBytes));
  if (!selected || !m_tree.hasFocus()) return;
  // In the colour of the text, which is visible on both selection and background.
  painter.setBrush(Qt::NoBrush);
  painter.setPen(look.text);
  painter.drawRect(label.adjusted(0, 0, -1, -1));
}
