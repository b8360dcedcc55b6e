// The items of a list box as a model.
#pragma once

#include <QAbstractListModel>

#include "controls/listbox/list_box_items.h"
#include "controls/text/ui/row_text.h"
#include "docview/ui/plain_tool_tip.h"

class ListBoxModel final : public QAbstractListModel {
 public:
  using QAbstractListModel::QAbstractListModel;

  const ListBoxItems& Items() const { return m_items; }
  void Clear() {
    beginResetModel();
    m_items.Clear();
    endResetModel();
  }
  int Add(const std::string& text, std::uintptr_t data) {
    const int place = m_items.PlaceOf(text);
    beginInsertRows({}, place, place);
    m_items.Insert(place, text, data);
    endInsertRows();
    return place;
  }
  void Erase(int item) {
    beginRemoveRows({}, item, item);
    m_items.Erase(item);
    endRemoveRows();
  }

  int rowCount(const QModelIndex& parent = {}) const override {
    return parent.isValid() ? 0 : m_items.Count();
  }
  QVariant data(const QModelIndex& index, int role) const override {
    if (role != Qt::DisplayRole && role != Qt::ToolTipRole) return {};
    const QString text = CellLine(m_items.Text(index.row()), kTextBytes);
    return role == Qt::DisplayRole ? text : PlainToolTip(text);
  }

 private:
  static constexpr std::size_t kTextBytes = 4096;  // names come from other machines
  ListBoxItems m_items;
};
