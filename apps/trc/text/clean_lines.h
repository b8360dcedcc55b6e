// Traces as data for other programs: a line each, every cell a value.
//
// Shape    CSV as RFC 4180 has it: a header, cells in quotes where they need them, quotes doubled,
//          lines ended by CR LF; a value that a trace lacks is an empty cell. JSON Lines: an object
//          each, keyed by the column headers; numbers are numbers, a lacking value is null, a text
//          that is not UTF-8 an object {"hex":"..."}.
// Errors   None.
// Threads  Pure.
#pragma once

#include <string>
#include <vector>

#include "listview/columns/columns.h"

// The lines come without their last "\n".
void WriteRfc4180Header(std::string& out, const std::vector<Column>& columns);
void WriteRfc4180Line(std::string& out, const std::vector<Column>& columns,
                      const TraceEvent_i& event, const TraceEvent_i* previous, const NameMap& names,
                      bool utc);
void WriteJsonLine(std::string& out, const std::vector<Column>& columns, const TraceEvent_i& event,
                   const TraceEvent_i* previous, const NameMap& names, bool utc);
