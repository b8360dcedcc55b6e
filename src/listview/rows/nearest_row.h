// The search for the row of a trace, or for the nearest by sequence number, as long work: every row
// before it has to be looked at.
//
// The first row that shows the target counts; else of the two rows around the first greater number
// the nearer one, the earlier on a tie; none when all rows have smaller numbers.
//
// Owner    Borrows rows and target. REQUIRES: neither changes while it is under way.
// Threads  Interface thread.
#pragma once

#include "docview/dialogs/long_work.h"
#include "listview/rows/row_store.h"

class NearestRow final : public LongWork {
 public:
  NearestRow(const RowStore& rows, const TraceEvent_i& target);

  bool DoPart() override;
  std::optional<int> Progress() const override;
  int Row() const { return m_row; }  // -1: none

 private:
  bool Look();

  const RowStore& m_rows;
  const TraceEvent_i& m_target;
  const std::uint32_t m_wanted;
  std::uint32_t m_previous = 0;  // number of the row before
  int m_next = 0;
  int m_row = -1;
};
