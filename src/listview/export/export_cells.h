// The text of an export: a header line, then a line per trace, with commas between the cells. The
// file adds the line ends.
//
// Shape    UTF-8 as in the traces. Texts, sources and stacks are quoted, with a backslash before
//          each quote and backslash in them. Names and times are quoted without changes. A trace of
//          several lines stays within its quotes.
// Errors   None: a missing value gives an empty cell, with its comma.
// Threads  Pure, but for SetAddressWriter.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "listview/columns/columns.h"

// The columns to write, in screen order: those that are shown, or all.
std::vector<Column> ExportColumns(const ColumnOrder& order, const ColumnFlags& shown, bool hidden);

void WriteQuoted(std::string& out, std::string_view text);
// `previous` is the trace in the row above, null for the first row.
void WriteExportCell(std::string& out, Column column, const TraceEvent_i& event,
                     const TraceEvent_i* previous, const NameMap& names, bool utc);

// Writes the cells with addresses. Tests, which cannot foresee an address, replace it. Returns the
// previous writer.
using AddressWriter = void (*)(std::string& out, const std::string& text);
AddressWriter SetAddressWriter(AddressWriter writer);

void WriteExportHeader(std::string& out, const std::vector<Column>& columns);
void WriteExportLine(std::string& out, const std::vector<Column>& columns,
                     const TraceEvent_i& event, const TraceEvent_i* previous, const NameMap& names,
                     bool utc);
