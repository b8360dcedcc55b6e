// What a user has said of traces, for the fields `marked` and `note` of a filter text.
//
// Shape    A colour from 1 to kMarkColours, 0 for none; a note, empty for none (never null).
// Threads  Of: any, while nobody changes the marks.
#pragma once

#include <cstdint>
#include <string_view>

constexpr std::uint8_t kMarkColours = 9;

struct WhereMark {
  std::uint8_t colour = 0;
  std::string_view note = "";
};

class WhereMarks {
 public:
  virtual ~WhereMarks() = default;
  // Of the trace that this record belongs to: a record is known by its address.
  virtual WhereMark Of(const std::uint8_t* record) const = 0;
};
