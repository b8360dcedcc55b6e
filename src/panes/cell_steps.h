// The steps of the filter text that a cell of the list or an item of the tree offers.
//
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "records/name_map.h"
#include "where/text/where_fields.h"

class TraceEvent_i;

struct CellStep {
  unsigned command;   // ID_FILTER_ONLYTHIS ...
  std::string label;  // of the menu item, with the access key; a long value is cut
  std::string text;   // the test to add to the filter text
};

struct CellValue {
  WhereField field;
  std::string value;  // as the trace has it: any bytes
};

// In the order of the menu. `cell`: none for one whose value nobody would filter by. The trace is
// null for a place without one.
std::vector<CellStep> StepsOfCell(const std::optional<CellValue>& cell, const TraceEvent_i* event,
                                  const NameMap& names);
