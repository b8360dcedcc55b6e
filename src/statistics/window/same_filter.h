// Do two filters show the same traces?
//
// Threads  Interface thread.
#pragma once

#include "tree/filter/trace_filter.h"

// True also if one of them has names of later traces, which it shows like the other. False may be
// wrong where threads are filtered.
bool ShowTheSame(const CTraceFilter& a, const CTraceFilter& b);
