// Paints the cells of a report list: marks, then the text. A text that is cut has a tool tip.
#pragma once

#include <QStyledItemDelegate>
#include <vector>

#include "controls/report/report_list.h"

class ReportCells final : public QStyledItemDelegate {
 public:
  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter* painter, const QStyleOptionViewItem& option,
             const QModelIndex& index) const override;
  QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override;
  bool helpEvent(QHelpEvent* event, QAbstractItemView* view, const QStyleOptionViewItem& option,
                 const QModelIndex& index) override;

 private:
  void PaintMarked(QPainter& painter, QStyleOptionViewItem cell, const QModelIndex& index,
                   const std::vector<ReportMark>& marks) const;
};
