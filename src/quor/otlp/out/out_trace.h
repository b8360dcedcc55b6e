// A trace on its way to a collector: its fields by their texts.
//
// Owner    Borrows all texts.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string_view>

struct OutTrace {
  std::uint64_t serial = 0;  // of its source, from 1; 0: a report, which is none of its traces
  std::string_view machine, app, component, category, process, thread, file;
  std::uint32_t date = 0, time = 0;  // packed, as in a record
  std::uint64_t tic = 0;             // picoseconds; 0: none
  int attributes = 0;
  std::uint32_t line = 0;
  std::string_view text, stack;
};

// Where a trace comes from: a resource of OpenTelemetry.
struct OutOrigin {
  std::string_view instance;  // 16 bytes
  std::string_view machine, app, process;
};
