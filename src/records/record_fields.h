// The fields of a trace on their way into a record: see docs/formats.md.
//
// Threads  Pure.
#pragma once

#include <cstdint>
#include <cstring>
#include <string_view>
#include <vector>

#include "base/bytes.h"
#include "records/raw_trace.h"

constexpr std::size_t kLongestText = 0xFFFF;  // bytes: a length field has 16 bits

// Everything that a record holds, in its order.
struct RecordFields {
  std::uint32_t count = 0;
  NameId machine = 0, app = 0, component = 0, category = 0;
  std::uint32_t date = 0, time = 0;
  std::uint64_t ticCount = 0;
  NameId pid = 0, tid = 0;
  std::uint16_t attributes = 0;
  NameId sourceFile = 0;
  std::uint32_t sourceLine = 0;
  std::string_view text = {}, stack = {};
};

// Writes RawTrace::kFixedBytes + text + stack bytes. REQUIRES: neither is longer than kLongestText.
// It stands in the header for the library of traced applications, which links nothing of this room.
inline void StoreRecord(std::uint8_t* to, const RecordFields& fields) {
  const auto storeText = [](std::uint8_t* at, std::string_view text) {
    StoreBe16(at, static_cast<std::uint16_t>(text.size()));
    if (!text.empty()) std::memcpy(at + 2, text.data(), text.size());
    return at + 2 + text.size();
  };
  StoreBe32(to, fields.count);
  StoreBe16(to + 4, fields.machine);
  StoreBe16(to + 6, fields.app);
  StoreBe16(to + 8, fields.component);
  StoreBe16(to + 10, fields.category);
  StoreBe32(to + 12, fields.date);
  StoreBe32(to + 16, fields.time);
  StoreBe64(to + 20, fields.ticCount);
  StoreBe16(to + 28, fields.pid);
  StoreBe16(to + 30, fields.tid);
  StoreBe16(to + 32, fields.attributes);
  StoreBe16(to + 34, fields.sourceFile);
  StoreBe32(to + 36, fields.sourceLine);
  storeText(storeText(to + 40, fields.text), fields.stack);
}

// Makes `record` the record of these fields; texts are cut to kLongestText at the boundary of a
// character. A vector that is used again keeps its storage.
void MakeRecord(RecordFields fields, std::vector<std::uint8_t>& record);
