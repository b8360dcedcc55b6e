// The filter text that shows traces again: by their numbers, and where one has none by its time and
// its text. Other traces with the same number, or the same time and text, pass it as well.
//
// Errors   IsTooLong: a filter text cannot have so many tests or bytes. Finish gives none then.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "records/trace_event.h"

class CopiedFilter {
 public:
  void Add(const TraceEvent_i& trace);
  void Finish(std::string& out);
  bool IsTooLong() const { return m_tooLong; }

 private:
  std::vector<std::uint32_t> m_numbers;
  std::set<std::pair<std::uint64_t, std::string>> m_others;  // stamp and text
  bool m_tooLong = false;
};
