// The fields of a trace on their way into a record: see docs/formats.md.
//
// Threads  Pure.
#pragma once

#include <cstdint>
#include <string_view>
#include <vector>

#include "records/name_map.h"

constexpr std::size_t kLongestText = 0xFFFF;  // bytes: a length field has 16 bits

// Everything that a record holds, in its order.
struct RecordFields {
  std::uint32_t count;
  NameId machine, app, component, category;
  std::uint32_t date, time;
  std::uint64_t ticCount;
  NameId pid, tid;
  std::uint16_t attributes;
  NameId sourceFile;
  std::uint32_t sourceLine;
  std::string_view text, stack;
};

// Makes `record` the record of these fields; texts are cut to kLongestText at the boundary of a
// character. A vector that is used again keeps its storage.
void MakeRecord(const RecordFields& fields, std::vector<std::uint8_t>& record);
