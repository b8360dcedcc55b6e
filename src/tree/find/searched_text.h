// The text of a trace that a search tests: its message, and nothing else of it.
//
// Threads  Pure.
#pragma once

#include <string>
#include <string_view>

#include "records/trace_event.h"

// Read in the record where the trace has one, else put into `kept`. Good as long as the trace and
// `kept` are as they are.
inline std::string_view SearchedText(const TraceEvent_i& trace, std::string& kept) {
  if (const std::uint8_t* const record = trace.Record()) return RawTrace(record).Text();
  kept = trace.GetText();
  return kept;
}
