// A filter as the options --uncheck and --check that make it.
//
// Shape    One option a line, quoted for a shell, in their order: --uncheck 'All Severities/Info'.
//          A quoted path is one line of printable characters.
// Threads  One.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "documents/trace_doc.h"
#include "filter/filter_paths.h"

// Empty: everything is shown. REQUIRES: the filter has all names of the document.
// Errors   Nothing, and a reason: a path has several nodes of different states.
std::optional<std::vector<std::string>> TreeSteps(CTraceDoc& document, const CTraceFilter& filter,
                                                  std::string* why);
