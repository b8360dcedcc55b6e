// The text of a list cell. trc prints the same texts.
//
// Errors   None: an unknown name is empty, an invalid column gives an empty cell.
// Threads  Touches only its arguments: the caller passes the value of g_useUtc.
#pragma once

#include <string>
#include <string_view>

#include "records/trace_event.h"

// The identity of a column in all tables, settings and exports; the order on the screen is
// separate.
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
  Stack,
  // Columns of times behind the fifteen, whose texts are those of listview/time.
  Delta,
  Since,
  WallTime,
  Account = 1000  // in no list, whose columns are fixed: for programs that name their columns
};

// `previous` is the trace in the row above, null for the first row.
std::string CellText(Column column, const TraceEvent_i& event, const TraceEvent_i* previous,
                     const NameMap& names, bool utc);

// 0 Info, 1 Warn, 2 Error; -1 for any other severity, which has no icon.
int SeverityIcon(const TraceEvent_i& event);
// "Info", "Warn" or "Error"; empty for any other severity.
std::string_view SeverityWord(const TraceEvent_i& event);
