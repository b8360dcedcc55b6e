// What a trace has in one field, as the bytes that tables of counts tell it by (stat_field.h).
//
// Threads  One at a time. Nothing is allocated per trace.
#pragma once

#include "records/trace_event.h"
#include "statistics/stat_field.h"
#include "statistics/text_pattern.h"

class StatKey {
 public:
  explicit StatKey(StatField field) : m_field(field) {}

  // Valid until the next call.
  std::string_view Of(const RawTrace& trace);
  // Of several severities the first: 0 info, 1 warn, 2 error, 3 none of these.
  static std::uint32_t SeverityOf(int attributes) {
    constexpr std::uint8_t kFirst[] = {3, 0, 1, 0, 2, 0, 1, 0};
    return kFirst[attributes & kSeverityMask];
  }
  static std::string_view BytesOf(const StatThread& thread, char* to);

  static constexpr std::size_t kBytes = 6;  // of the longest key but patterns

 private:
  const StatField m_field;
  TextPattern m_pattern;
  char m_bytes[kBytes];
};
