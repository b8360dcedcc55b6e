// Writing names and checking traces of the .trc form in memory: one writer and one checker for the
// ring, the file sink and the stream to a monitor. Traces are written by StoreRecord.
//
// Shape    See records/raw_trace.h and records/trc_walk.h.
// Errors   The checks answer false for bytes that are not exactly one whole record.
// Threads  Pure.
#pragma once

#include <cstring>
#include <string_view>

#include "base/bytes.h"
#include "records/raw_trace.h"
#include "records/record_fields.h"
#include "records/trc_walk.h"

constexpr std::size_t kNameBodyBytes = 4;  // a name record without its tag and text

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
