// The part of a trace that a search tests: only its text.
//
// Threads  Pure.
#pragma once

#include <string>
#include <string_view>

#include "records/trace_event.h"

// Refers to the record if the trace has one; otherwise the text is stored in `kept`. Valid as long
// as the trace and `kept` do not change.
inline std::string_view SearchedText(const TraceEvent_i& trace, std::string& kept) {
  if (const std::uint8_t* const record = trace.Record()) return RawTrace(record).Text();
  kept = trace.GetText();
  return kept;
}
