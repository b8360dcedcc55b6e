// The row that has the focus, and how it is found in the file again.
//
// Threads  Pure.
#pragma once

#include <optional>

#include "records/trace_list.h"
#include "views/view_state.h"

// Of a trace of a mapped file that is read from its beginning to its end; none for any other.
std::optional<ViewRow> RowOf(const TraceEvent_i* trace, const TraceList_t& traces);

// The trace with its number, if its record is the same; else the nearest one with this record among
// those around it; else the one with its number. Null: the file has become shorter.
TraceEvent_i* FindRow(const ViewRow& row, const TraceList_t& traces);
