// The row list for assistive technology: a table whose children are the header's cells, the visible
// cells row by row, and, while it shows, the button that leads to the end.
//
// Shape    rowCount and cellAt refer to all rows; children, and lists of selected rows, only to the
//          visible ones, so that no cost depends on the number of rows.
// Threads  Interface thread.
#pragma once

#include <QAccessibleWidget>
#include <map>
#include <utility>

#include "controls/list/ui/row_list_widget.h"

// Makes Qt describe row lists by the classes below. May be called more than once.
void InstallRowListAccessible();
// Announces a row's new state, if a listener is active.
void NotifyAccessible(QtRowList& list, int row, unsigned oldState, unsigned newState);

class RowListAccessible final : public QAccessibleWidget, public QAccessibleTableInterface {
 public:
  explicit RowListAccessible(QtRowList& list);
  ~RowListAccessible() override;

  void* interface_cast(QAccessible::InterfaceType type) override;
  int childCount() const override;
  QAccessibleInterface* child(int index) const override;
  int indexOfChild(const QAccessibleInterface* child) const override;
  QAccessibleInterface* childAt(int x, int y) const override;
  QAccessibleInterface* focusChild() const override;

  QAccessibleInterface* caption() const override { return nullptr; }
  QAccessibleInterface* summary() const override { return nullptr; }
  QAccessibleInterface* cellAt(int row, int column) const override;
  int rowCount() const override;
  int columnCount() const override;
  QString rowDescription(int row) const override;
  QString columnDescription(int column) const override;
  int selectedCellCount() const override;
  QList<QAccessibleInterface*> selectedCells() const override;
  int selectedRowCount() const override;
  QList<int> selectedRows() const override;
  bool isRowSelected(int row) const override;
  bool selectRow(int row) override;
  bool unselectRow(int row) override;
  // Only rows are selected, never columns.
  int selectedColumnCount() const override { return 0; }
  QList<int> selectedColumns() const override { return {}; }
  bool isColumnSelected(int) const override { return false; }
  bool selectColumn(int) override { return false; }
  bool unselectColumn(int) override { return false; }
  void modelChange(QAccessibleTableModelChangeEvent*) override {}

 private:
  using Cell = std::pair<int, int>;  // row (-1: header), place of the column among those shown
  static constexpr std::size_t kKeptCells = 4096;

  QtRowList& List() const { return m_list; }
  int RowsOnView() const;
  QAccessibleInterface* Get(Cell cell) const;
  void Prune() const;

  QtRowList& m_list;
  mutable std::map<Cell, QAccessible::Id> m_cells;  // the cells that were given out
};
