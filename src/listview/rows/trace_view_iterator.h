// The list's cursor.
//
// Owner    Borrows the view and its rows. It keeps its row number while a monitor adds and trims
//          rows. A move starts from that number, limited to the existing rows.
// Threads  Interface thread.
#pragma once

#include "listview/details/trace_iterator.h"
#include "listview/rows/trace_view.h"

class CTraceViewIterator : public CTraceIterator {
 public:
  CTraceViewIterator(CTraceView& view, const RowStore& rows, int row);
  void Next() override;
  void Prev() override;
  bool HasNext() const override;
  bool HasPrev() const override;

 private:
  void MoveTo(int row);

  CTraceView& m_view;
  const RowStore& m_rows;
  int m_row;
};
