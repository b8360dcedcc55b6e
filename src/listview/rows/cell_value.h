// What a cell of the list says as a field of the filter text.
//
// Threads  Pure.
#pragma once

#include "listview/cells/cell_text.h"
#include "panes/cell_steps.h"

// Nothing for a column whose values hardly come twice, or for a cell without a value.
std::optional<CellValue> CellValueOf(Column column, const TraceEvent_i& event,
                                     const NameMap& names);
