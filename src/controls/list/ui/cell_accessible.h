// One cell of the row list, or of its header, for assistive technology.
#pragma once

#include <QAccessibleInterface>

#include "controls/list/ui/row_list_widget.h"

class CellAccessible final : public QAccessibleInterface, public QAccessibleTableCellInterface {
 public:
  // Row -1 is the header; `place` counts the shown columns from the left. The table outlives it.
  CellAccessible(QtRowList& list, QAccessibleInterface& table, int row, int place);

  void* interface_cast(QAccessible::InterfaceType type) override;
  bool isValid() const override;
  QObject* object() const override { return nullptr; }
  QAccessibleInterface* parent() const override { return &m_table; }
  QAccessibleInterface* child(int) const override { return nullptr; }
  QAccessibleInterface* childAt(int, int) const override { return nullptr; }
  int childCount() const override { return 0; }
  int indexOfChild(const QAccessibleInterface*) const override { return -1; }
  QString text(QAccessible::Text kind) const override;
  void setText(QAccessible::Text, const QString&) override {}
  QRect rect() const override;
  QAccessible::Role role() const override;
  QAccessible::State state() const override;

  bool isSelected() const override;
  QList<QAccessibleInterface*> columnHeaderCells() const override;
  QList<QAccessibleInterface*> rowHeaderCells() const override { return {}; }
  int rowIndex() const override { return m_row; }
  int columnIndex() const override { return m_place; }
  int rowExtent() const override { return 1; }
  int columnExtent() const override { return 1; }
  QAccessibleInterface* table() const override { return &m_table; }

  // The name of a cell: its text, or the name of its icon.
  static QString NameOf(const QtRowList& list, int row, ListColumn column);

 private:
  QtRowList& m_list;
  QAccessibleInterface& m_table;
  const int m_row, m_place;
};
