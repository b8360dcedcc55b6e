// The texts of all fields of one trace, as its properties show them.
//
// Shape    UTF-8, as the trace has them.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "records/trace_event.h"

struct DetailTexts {
  std::string severity, count, attributes, component, category;
  std::string machine, application, pid, tid;
  std::string account;  // empty: the process names none
  std::string time, ticCount;
  std::string source;  // "cache.cpp:60"; empty: the trace names none
};

DetailTexts DetailTextsOf(const TraceEvent_i& event, const NameMap& names);
// The time since the trace before; "n/a" without one, or without a tic count. A difference below 0
// wraps.
std::string TicDifferenceText(std::uint64_t ticCount, const TraceEvent_i* earlier);
// One for each recorded frame.
std::vector<std::string> StackLines(const std::string& stack);
