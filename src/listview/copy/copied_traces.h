// The traces that a copy is made of: the selected rows of a list, what is below an item of a tree.
//
// Owner    Borrows its view, which nothing changes meanwhile.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "listview/cells/cell_text.h"

struct CopiedTrace {
  const TraceEvent_i* event = nullptr;
  const TraceEvent_i* above = nullptr;  // in the row above, selected or not; null: none
  int row = -1;                         // of a list
};

class CopiedTraces {
 public:
  virtual ~CopiedTraces() = default;
  // From the first one again.
  virtual void Rewind() = 0;
  // The next one in the order of the view; false after the last.
  virtual bool Next(CopiedTrace& trace) = 0;
  // The thousandths of what has been given.
  virtual int Progress() const = 0;
  // Those that show, in screen order.
  virtual std::vector<Column> Columns() const = 0;
  // A cell of a column that CellText does not know.
  virtual std::string FurtherText(const CopiedTrace&, Column) { return {}; }
};
