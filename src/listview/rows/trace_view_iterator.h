// The list's cursor.
//
// Owner    Borrows the view and its rows. Its index keeps its number while a monitor adds and trims
//          rows: a move goes on from there, and is brought back among the rows that there are.
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
