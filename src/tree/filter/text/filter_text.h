// The marks of a filter as a filter text.
//
// Shape    The text lets through the traces that the marks let through, also those whose names
//          come later. A later trace is known by its names, and a later process by its number on
//          its machine. `severity >= warn and component not in {Cache, Net}`.
// Threads  Pure.
#pragma once

#include <optional>
#include <string>

#include "tree/filter/text/filter_names.h"
#include "tree/filter/trace_filter.h"

// Empty: the marks show every trace. The filter's own text is left out.
// Errors   Nothing, and a reason: two ids that a text cannot tell apart, or a text that would be
//          too long.
std::optional<std::string> TextOfFilter(const CTraceFilter& filter, const FilterNames& names,
                                        std::string* why = nullptr);
