#include "tree/filter/ui/filter_boxes.h"

#include <QApplication>
#include <QKeyEvent>
#include <QMouseEvent>
#include <QPainter>

namespace {

constexpr int kBoxPx = 16;
constexpr int kRowMarginPx = 4;
constexpr int kScales[] = {1, 2, 3};  // for screens of that many dots per pixel
constexpr QRectF kFrame(2.5, 2.5, 11, 11);
constexpr qreal kCrossInset = 3, kCrossWidth = 2;

QColor Between(const QColor& a, const QColor& b, qreal part) {
  return QColor::fromRgbF(a.redF() + (b.redF() - a.redF()) * part,
                          a.greenF() + (b.greenF() - a.greenF()) * part,
                          a.blueF() + (b.blueF() - a.blueF()) * part);
}

void PaintBox(QPainter& painter, Qt::CheckState state, const QPalette& palette) {
  const QColor paper = palette.color(QPalette::Base), ink = palette.color(QPalette::Text);
  const bool grey = state == Qt::PartiallyChecked;
  painter.setPen(QPen(Between(paper, ink, 0.6), 1));
  painter.setBrush(grey ? Between(paper, ink, 0.25) : paper);
  painter.drawRect(kFrame);
  if (state == Qt::Unchecked) return;
  const QRectF cross = kFrame.adjusted(kCrossInset, kCrossInset, -kCrossInset, -kCrossInset);
  painter.setRenderHint(QPainter::Antialiasing);
  painter.setPen(
      QPen(grey ? Between(paper, ink, 0.75) : ink, kCrossWidth, Qt::SolidLine, Qt::RoundCap));
  painter.drawLine(cross.topLeft(), cross.bottomRight());
  painter.drawLine(cross.topRight(), cross.bottomLeft());
}

}  // namespace

QIcon FilterBox(Qt::CheckState state, const QPalette& palette) {
  QIcon icon;
  for (const int scale : kScales) {
    QPixmap picture(kBoxPx * scale, kBoxPx * scale);
    picture.setDevicePixelRatio(scale);
    picture.fill(Qt::transparent);
    QPainter painter(&picture);
    PaintBox(painter, state, palette);
    painter.end();
    // The box of a selected item looks like the others.
    for (const QIcon::Mode mode : {QIcon::Normal, QIcon::Selected}) icon.addPixmap(picture, mode);
  }
  return icon;
}

FilterBoxes::FilterBoxes(std::function<void(const QModelIndex&)> toggle, QObject* parent)
    : QStyledItemDelegate(parent), m_toggle(std::move(toggle)) {}

// Draws the box in place of the item's icon and suppresses the style's own box.
void FilterBoxes::initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const {
  QStyledItemDelegate::initStyleOption(option, index);
  option->features.setFlag(QStyleOptionViewItem::HasCheckIndicator, false);
  option->features.setFlag(QStyleOptionViewItem::HasDecoration, true);
  option->decorationSize = QSize(kBoxPx, kBoxPx);
  const auto state = static_cast<Qt::CheckState>(index.data(Qt::CheckStateRole).toInt());
  option->icon = FilterBox(state, option->palette);
}

QSize FilterBoxes::sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  const QSize size = QStyledItemDelegate::sizeHint(option, index);
  return {size.width(), std::max(size.height(), kBoxPx + kRowMarginPx)};
}

QRect FilterBoxes::BoxRect(const QStyleOptionViewItem& option, const QModelIndex& index) const {
  QStyleOptionViewItem item = option;
  initStyleOption(&item, index);
  const QStyle* style = option.widget ? option.widget->style() : QApplication::style();
  return style->subElementRect(QStyle::SE_ItemViewItemDecoration, &item, option.widget);
}

// A click is a release over the box. The second click of a double click counts too and opens
// nothing.
bool FilterBoxes::editorEvent(QEvent* event, QAbstractItemModel*,
                              const QStyleOptionViewItem& option, const QModelIndex& index) {
  if (event->type() == QEvent::KeyPress) {
    const int key = static_cast<QKeyEvent*>(event)->key();
    if (key != Qt::Key_Space && key != Qt::Key_Select) return false;
    m_toggle(index);
    return true;
  }
  const bool release = event->type() == QEvent::MouseButtonRelease;
  if (!release && event->type() != QEvent::MouseButtonDblClick) return false;
  const auto* mouse = static_cast<QMouseEvent*>(event);
  if (mouse->button() != Qt::LeftButton || !BoxRect(option, index).contains(mouse->pos()))
    return false;
  if (release) m_toggle(index);
  return true;
}
