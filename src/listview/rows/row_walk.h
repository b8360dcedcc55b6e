// The texts of the rows for a search, from the row after (before) the focused one, around to that
// row.
//
// Kept: the focused row is not tested, unless the search wraps at its first step. Each search ends
// after one pass.
//
// Shape    The rows of a large file are scanned ahead by all processors, and only those that may
//          match are candidates. The search still tests them, so that a hit is the same.
// Owner    Borrows rows and traces, which must not change.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <string>

#include "listview/rows/row_store.h"
#include "tree/find/find_search.h"
#include "tree/find/scan/text_scan.h"

class RowWalk final : public FindWalk {
 public:
  using BeginScan = std::function<std::unique_ptr<TextScan>(const ScanOrder& order)>;

  RowWalk(const RowStore& rows, int focusedRow, bool backward);
  // Passes over what the scan rules out. REQUIRES: the rows are those of these traces, and the scan
  // is of the same. Nothing happens if it is null.
  void Scan(const TraceList_t& traces, const BeginScan& begin);

  bool Prepare() override;
  std::optional<std::string_view> NextText() override;

  int Row() const { return m_row; }
  // Next to the start; outside the rows when the search wrapped at its first step.
  int StopRow() const { return m_stop; }

 private:
  void Step();
  void PassTo(int row);

  const RowStore& m_rows;
  const int m_step;
  int m_left;  // rows to test
  int m_row = 0, m_stop = 0;
  std::string m_text;
  const TraceList_t* m_traces = nullptr;
  std::unique_ptr<TextScan> m_scan;  // null: each row is tested
  bool m_found = false;              // the next step leads to a candidate, or the pass is over
};
