// A trace on behalf of a function of the C interface.
//
// Threads  As quor_trace.
#pragma once

#include <string_view>

#include "quor/quor.h"

// `caller`: the address to which that function returns, where a recorded call stack begins.
void TraceFrom(const void* caller, quor_point* point, unsigned attributes, const char* file,
               unsigned line, std::string_view text);
