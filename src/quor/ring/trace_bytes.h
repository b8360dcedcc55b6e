// Writing and checking the tagged records of the .trc form in memory: one writer and one checker
// for the ring, the file sink and the stream to a monitor.
//
// Shape    See records/raw_trace.h and records/trc_walk.h.
// Errors   The checks answer false for bytes that are not exactly one whole record.
// Threads  Pure.
#pragma once

#include <cstring>
#include <string_view>

#include "base/bytes.h"
#include "records/raw_trace.h"
#include "records/trc_walk.h"

constexpr std::size_t kTextBytesMax = 65535;
constexpr std::size_t kNameBodyBytes = 4;  // a name record without its tag and text

// The fields of a raw trace in the order of the record. The ids stand in it as they are.
struct TraceFields {
  std::uint32_t count = 0;
  NameId machine = 0, app = 0, component = 0, category = 0;
  std::uint32_t date = 0, time = 0;
  std::uint64_t ticPs = 0;
  NameId pid = 0, tid = 0;
  std::uint16_t attributes = 0;
  NameId file = 0;
  std::uint32_t line = 0;
};

// Writes RawTrace::kFixedBytes + text + stack bytes. REQUIRES: neither is longer than
// kTextBytesMax.
inline void StoreTrace(std::uint8_t* to, const TraceFields& fields, std::string_view text,
                       std::string_view stack) {
  StoreBe32(to, fields.count);
  StoreBe16(to + 4, fields.machine);
  StoreBe16(to + 6, fields.app);
  StoreBe16(to + 8, fields.component);
  StoreBe16(to + 10, fields.category);
  StoreBe32(to + 12, fields.date);
  StoreBe32(to + 16, fields.time);
  StoreBe64(to + 20, fields.ticPs);
  StoreBe16(to + 28, fields.pid);
  StoreBe16(to + 30, fields.tid);
  StoreBe16(to + 32, fields.attributes);
  StoreBe16(to + 34, fields.file);
  StoreBe32(to + 36, fields.line);
  StoreBe16(to + 40, static_cast<std::uint16_t>(text.size()));
  if (!text.empty()) std::memcpy(to + 42, text.data(), text.size());
  StoreBe16(to + 42 + text.size(), static_cast<std::uint16_t>(stack.size()));
  if (!stack.empty()) std::memcpy(to + 44 + text.size(), stack.data(), stack.size());
}

// Are these bytes exactly one raw trace? Reads nothing behind them.
inline bool IsWholeTrace(Bytes bytes) {
  if (bytes.size() < RawTrace::kFixedBytes) return false;
  const std::size_t stackAt = 42u + LoadBe16(bytes.data() + 40);
  if (stackAt + 2 > bytes.size()) return false;
  return stackAt + 2 + LoadBe16(bytes.data() + stackAt) == bytes.size();
}

// Writes the body of a name record (its id, length and text). Gives the bytes written.
inline std::size_t StoreName(std::uint8_t* to, NameId id, std::string_view text) {
  StoreBe16(to, id);
  StoreBe16(to + 2, static_cast<std::uint16_t>(text.size()));
  if (!text.empty()) std::memcpy(to + kNameBodyBytes, text.data(), text.size());
  return kNameBodyBytes + text.size();
}

// How many of at most `bytes` bytes of a text are kept so that no UTF-8 sequence is cut apart.
inline std::size_t CutLength(const char* text, std::size_t length, std::size_t bytes) {
  if (length <= bytes) return length;
  std::size_t cut = bytes;
  // At most three continuation bytes belong to one character; anything else is not UTF-8.
  for (int i = 0; i < 3 && cut > 0 && (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80; ++i)
    --cut;
  return (static_cast<unsigned char>(text[cut]) & 0xC0) == 0x80 ? bytes : cut;
}
