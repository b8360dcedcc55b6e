// The time between two traces.
//
// Shape    Seconds: "0.000001250" by the tic counts of one process, "-3.020" by date and time.
// Threads  Pure.
#pragma once

#include <string>

#include "records/trace_event.h"

// What is needed of a trace, which may be deleted meanwhile.
struct TracePoint {
  explicit TracePoint(const TraceEvent_i& trace);

  std::uint64_t stamp;  // as StampOf
  std::uint64_t tic;
  std::uint32_t process;  // by machine and process id
};

// From `a` to `b`, below 0 if `b` is earlier. By the tic counts if both have one and are of one
// process, by date and time otherwise; "n/a" if these are not of a calendar.
std::string TimeSpanText(const TracePoint& a, const TracePoint& b);

// Of a row, to the row above; "n/a" without one.
std::string DeltaText(const TraceEvent_i& trace, const TraceEvent_i* above);
