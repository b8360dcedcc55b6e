// What the list shows in a cell. trc prints the same texts.
//
// Errors   None: an unknown name is empty, a column that does not exist gives an empty cell.
// Threads  Touches only its arguments: the caller passes what g_useUtc says.
#pragma once

#include <string>

#include "records/trace_event.h"

// A column's identity in all tables, settings and exports; screen order is separate.
enum class Column : int {
  Sev,
  Count,
  TicCount,
  TicDiff,
  Time,
  Machine,
  Application,
  Component,
  Category,
  Attributes,
  Pid,
  Tid,
  Trace,
  Source,
  Stack
};

// `previous` is the trace in the row above, null for the first row.
std::string CellText(Column column, const TraceEvent_i& event, const TraceEvent_i* previous,
                     const NameMap& names, bool utc);

// 0 Info, 1 Warn, 2 Error; -1 for any other severity, which has no icon.
int SeverityIcon(const TraceEvent_i& event);
