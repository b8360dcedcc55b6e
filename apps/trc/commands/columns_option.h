// The option --columns: columns by their headers, as the list shows them.
//
// Errors   A header that no column has is a CLI::ValidationError with the near ones.
// Threads  Pure.
#pragma once

#include <string>
#include <vector>

#include "listview/cells/cell_text.h"

// "Time, Component, Trace".
std::vector<Column> ReadColumns(const std::string& list);
// Those that a list shows at first, and the time.
std::vector<Column> DefaultColumns();
// For the help.
std::string AllHeaders();
