// The severity of a log as attributes of a trace.
//
// Shape    A number from 1 to 24 counts before the text. A text that is another word than the
//          severity's own is part of the trace's text.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string_view>

struct OtlpSeverity {
  std::uint16_t attributes = 0;
  std::string_view word;  // stands before the text; empty: none
};

OtlpSeverity SeverityOf(std::uint32_t number, std::string_view text);
