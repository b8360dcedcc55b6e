// The layout of the records in a .trc file, a ring and a stream: see docs/formats.md. Only this
// file knows these numbers.
//
//   name record       | tag 10 | id 2 | N 2 | text N |
//                     ^record  ^body
//
//   trace record      | tag 11 | count 4 | machine 2 | app 2 | component 2 | category 2 | date 4 |
//                     ^record  ^body      '---------- 4 ids, 8 bytes -----------'
//                     | time 4 | tic count 8 | pid 2 | tid 2 | attributes 2 | source file 2 |
//                                             '- 2 ids ---'                  '-- 1 id ----'
//                     | source line 4 | L1 2 | text L1 | L2 2 | stack L2 |
//
// Shape    Big-endian, unaligned, no padding. In other headers "the record" means the body: the
//          bytes after the tag.
// Errors   The Whole checks read nothing beyond the given bytes.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string_view>

#include "base/bytes.h"
#include "records/name_ids.h"

constexpr std::uint8_t kTagName = 10;
constexpr std::uint8_t kTagTrace = 11;
constexpr std::size_t kTagBytes = 1;
constexpr std::size_t kLongestText = 0xFFFF;  // bytes: a length field has 16 bits

// Offsets in the body of a name record.
struct NameAt {
  static constexpr std::size_t kId = 0, kLength = 2, kText = 4;
};
constexpr std::size_t kNameBodyBytes = NameAt::kText;  // of an empty text
constexpr std::size_t kNameRecordBytes = kTagBytes + kNameBodyBytes;

// Offsets in the body of a trace record. The length of the stack follows the text.
struct TraceAt {
  static constexpr std::size_t kCount = 0, kMachine = 4, kApp = 6, kComponent = 8, kCategory = 10,
                               kDate = 12, kTime = 16, kTicCount = 20, kPid = 28, kTid = 30,
                               kAttributes = 32, kSourceFile = 34, kSourceLine = 36,
                               kTextLength = 40, kText = 42;
};
constexpr std::size_t kTextLengthBytes = 2;
constexpr std::size_t kTraceFixedBytes = TraceAt::kText + kTextLengthBytes;  // with two empty texts
constexpr std::size_t kTraceBytesMax = kTraceFixedBytes + 2 * kLongestText;

// The seven name ids of a trace, in the order of the record.
constexpr std::size_t kTraceIds[] = {TraceAt::kMachine,   TraceAt::kApp, TraceAt::kComponent,
                                     TraceAt::kCategory,  TraceAt::kPid, TraceAt::kTid,
                                     TraceAt::kSourceFile};

template <class Id>
inline Id LoadId(const void* from) {
  return static_cast<Id>(LoadBe16(from));
}
template <class Id>
inline void StoreId(void* to, Id id) {
  StoreBe16(to, IdNumber(id));
}

// A text field up to its first NUL.
inline std::string_view UpToNul(const std::uint8_t* text, std::size_t length) {
  const auto* chars = reinterpret_cast<const char*>(text);
  return {chars, strnlen(chars, length)};
}

// The length of the body at the beginning of `bytes`; 0 when their end cuts it.
inline std::size_t WholeNameBytes(Bytes bytes) {
  if (bytes.size() < kNameBodyBytes) return 0;
  const std::size_t whole = kNameBodyBytes + LoadBe16(bytes.data() + NameAt::kLength);
  return whole <= bytes.size() ? whole : 0;
}
inline std::size_t WholeTraceBytes(Bytes bytes) {
  if (bytes.size() < kTraceFixedBytes) return 0;
  const std::size_t stackAt = TraceAt::kText + LoadBe16(bytes.data() + TraceAt::kTextLength);
  if (stackAt + kTextLengthBytes > bytes.size()) return 0;
  const std::size_t whole = stackAt + kTextLengthBytes + LoadBe16(bytes.data() + stackAt);
  return whole <= bytes.size() ? whole : 0;
}

// Are these bytes the body of one trace and nothing else?
inline bool IsWholeTrace(Bytes bytes) {
  return !bytes.empty() && WholeTraceBytes(bytes) == bytes.size();
}
