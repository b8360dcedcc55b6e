// The names of one record at a time, each looked up once: many tests may want the same one.
//
// Owner    Borrows the names, which may change between two records.
// Threads  One.
#pragma once

#include <array>
#include <cstdint>
#include <string_view>

#include "records/name_map.h"
#include "records/raw_trace.h"

class WhereRecordNames {
 public:
  explicit WhereRecordNames(const NameMap& names) : m_names(names) {}

  void BeginRecord() { ++m_record; }
  // "" if it has none. `place`: of the number in the record.
  std::string_view Find(std::uint8_t place, std::uint16_t number) {
    Found& found = m_found[place];
    if (found.record == m_record && found.number == number) return found.name;
    const auto entry = m_names.find(number);
    found = {m_record, number, entry != m_names.end() ? entry->second.name : std::string_view()};
    return found.name;
  }

 private:
  struct Found {
    std::uint64_t record = 0;
    std::uint16_t number = 0;
    std::string_view name;
  };
  const NameMap& m_names;
  std::array<Found, TraceAt::kText> m_found;
  std::uint64_t m_record = 1;
};
