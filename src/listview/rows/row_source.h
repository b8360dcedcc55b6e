// The rows of a list that are written to a file, in order: all, or the selected ones.
//
// Owner    Borrows rows and control.
// Threads  Interface thread.
#pragma once

#include "controls/list/row_list.h"
#include "documents/save_traces.h"
#include "listview/rows/row_store.h"

class RowSource final : public TraceSource {
 public:
  RowSource(const RowStore& rows, const RowList& list, bool selectedOnly)
      : m_rows(rows), m_list(list), m_selectedOnly(selectedOnly) {}

  const TraceEvent_i* Next() override;
  std::optional<int> Progress() const override;
  // The trace of the row above the last one from Next, whether it is selected or not; null for the
  // first row.
  const TraceEvent_i* Above() const { return m_row > 0 ? m_rows.EventAt(m_row - 1) : nullptr; }

 private:
  const RowStore& m_rows;
  const RowList& m_list;
  const bool m_selectedOnly;
  int m_row = -1;  // the last row from Next; the number of rows after the last one
};
