// The option --columns: columns by their headers, as the list shows them.
//
// Errors   A header that no column has is a CLI::ValidationError with the near ones.
// Threads  Pure.
#pragma once

#include <string>
#include <vector>

#include "commands/dump.h"

// "Time, Component, Trace".
std::vector<Column> ReadColumns(const std::string& list);
// Those that a list shows at first, and the time.
std::vector<Column> DefaultColumns();
// Those of a command that prints lines. Lines for programs have all values.
void RefuseColumnsOf(DumpFormat format, const TraceOptions& traces);
// Those whose cells are made of several traces.
bool HasTimeColumn(const std::vector<Column>& columns);
// For the help.
std::string AllHeaders();
