// The search for the row of a trace, or for the nearest row by sequence number, as long work: it
// checks every row before the result.
//
// The first row with the target counts. Otherwise, of the two rows around the first greater number
// the nearer one counts, the earlier one on a tie. No row counts if all have smaller numbers.
//
// Owner    Borrows rows and target. REQUIRES: neither changes until it is done.
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
  // Every row is checked. More may come where rows still grow.
  bool IsAtEnd() const { return m_next >= m_rows.Size(); }

 private:
  bool Look();

  const RowStore& m_rows;
  const TraceEvent_i& m_target;
  const std::uint32_t m_wanted;
  std::uint32_t m_previous = 0;  // number of the row before
  int m_next = 0;
  int m_row = -1;
};
