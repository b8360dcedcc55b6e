// The boxes of the filter dialog's tree: their pictures, and clicks on them.
//
// Threads  Interface thread.
#pragma once

#include <QIcon>
#include <QStyledItemDelegate>
#include <functional>

// The state image of a box, 16 by 16 pixels, in the palette's colours: an empty box, a box with a
// cross, a grey box with a cross.
QIcon FilterBox(Qt::CheckState state, const QPalette& palette);

class FilterBoxes final : public QStyledItemDelegate {
 public:
  // `toggle` is called with the item whose box was clicked, or which is current when Space is hit.
  FilterBoxes(std::function<void(const QModelIndex&)> toggle, QObject* parent);

  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  // The rectangle of an item's box in the layout.
  QRect BoxRect(const QStyleOptionViewItem& option, const QModelIndex& index) const;

 protected:
  void initStyleOption(QStyleOptionViewItem* option, const QModelIndex& index) const override;
  bool editorEvent(QEvent* event, QAbstractItemModel* model, const QStyleOptionViewItem& option,
                   const QModelIndex& index) override;

 private:
  const std::function<void(const QModelIndex&)> m_toggle;
};
