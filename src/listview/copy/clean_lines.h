// Traces as data for other programs: one line each, with the value in every cell.
//
// Shape    CSV as in RFC 4180: a header, quotes around cells where needed, quotes doubled, lines
//          that end in CR LF; a missing value is an empty cell. JSON Lines: one object each, with
//          the column headers as keys; times are those of TraceMoments, numbers are numbers, a
//          missing value is null, a text that is not UTF-8 is an object {"hex":"..."}.
// Errors   None.
// Threads  Pure.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "listview/columns/columns.h"
#include "records/moments/trace_moments.h"

// The lines come without their last "\n".
void WriteRfc4180Header(std::string& out, const std::vector<Column>& columns);

// One row of a file.
struct CleanRow {
  std::uint64_t place;  // in the file
  const TraceEvent_i& event;
  const TraceEvent_i* previous;
  const NameMap& names;
  TraceMoments& moments;  // has learned the file
};
bool IsNumberColumn(Column column);
// The value of a cell; empty if the trace has none.
std::string CleanValue(Column column, const CleanRow& row);
// With quotes if they are needed.
void WriteRfc4180Cell(std::string& out, std::string_view value);
void WriteRfc4180Line(std::string& out, const std::vector<Column>& columns, const CleanRow& row);
void WriteJsonLine(std::string& out, const std::vector<Column>& columns, const CleanRow& row);
