// The columns of one list: their widths, their order, which of them show. The columns of times are
// inserted when the first of them is shown.
//
// Owner    Borrows the list.
// Threads  Interface thread.
#pragma once

#include <vector>

#include "controls/list/row_list.h"
#include "listview/columns/columns.h"

class RowColumns {
 public:
  explicit RowColumns(RowList& list) : m_list(list) {}

  // By the settings. Called once.
  void Create();
  // The settings have changed.
  void ShowAndHide();
  // The same as fitting each shown column by a double click.
  void Fit();
  bool Refuses(ListColumn column, int widthPx) const;  // a width of a drag
  void TakeWidth(ListColumn column, int widthPx);      // stores it
  void StoreOrder() const;
  ColumnOrder Order() const;  // of the fifteen

 private:
  void Insert(const ColumnInfo& info);
  void InsertTimes();

  RowList& m_list;
  std::vector<int> m_widths;  // by index
};
