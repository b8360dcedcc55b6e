// The filter dialog's tree as a model for Qt's views.
//
// Owner    Borrows the dialog, whose tree must exist.
// Threads  Interface thread.
#pragma once

#include <QAbstractItemModel>

#include "tree/filter/filter_dialog.h"

class FilterModel final : public QAbstractItemModel {
 public:
  explicit FilterModel(const CFilterDialog& dialog, QObject* parent)
      : QAbstractItemModel(parent), m_dialog(dialog) {}

  static FilterNode* NodeOf(const QModelIndex& index);  // null: no node
  QModelIndex IndexOf(FilterNode* node) const;
  // After a click: the node and those above it have new states. Nodes below it are asked for their
  // states when they are painted.
  void NotifyStates(FilterNode& clicked);

  QModelIndex index(int row, int column, const QModelIndex& parent) const override;
  QModelIndex parent(const QModelIndex& child) const override;
  int rowCount(const QModelIndex& parent) const override;
  int columnCount(const QModelIndex& parent) const override;
  // Labels, and the states as Qt's check states.
  QVariant data(const QModelIndex& index, int role) const override;
  Qt::ItemFlags flags(const QModelIndex& index) const override;

 private:
  const CFilterDialog& m_dialog;
};
