// One pass over the bytes of a trace file of the older format: see docs/formats.md.
//
// Shape    12-byte header, then tagged records end to end. Numbers are little-endian, texts end at
//          a NUL. Any other tag costs one byte and counts as a record.
// Owner    Borrows `bytes`; the sink keeps what it wants.
// Errors   None: a record that the end cuts is the last one. Its text ends with the file, its
//          missing numbers read as zeros. REQUIRES OldTrace::kFixedBytes of readable bytes after
//          the end (MappedFile provides them).
// Threads  Touches only its arguments.
#pragma once

#include <cstring>
#include <string_view>

#include "base/bytes.h"
#include "base/little_endian.h"
#include "records/trc_walk.h"

constexpr std::size_t kOldTrcHeaderBytes = sizeof kOldTrcHeader;

// The kinds of name are the tags of their records; each has keys of its own.
enum class OldName : std::uint8_t { Machine, App, Component, Category, SourceFile };
constexpr std::size_t kOldNameKinds = 5;
constexpr std::uint8_t kOldTagTrace = 5;

// A trace without its text. Kept: only one byte of a key counts. If the file has two bytes for it
// the higher one is ignored, in name records and traces alike, so that they agree.
class OldTrace {
 public:
  static constexpr std::size_t kFixedBytes = 46;  // the text follows

  explicit OldTrace(const std::uint8_t* body) : m_body(body) {}

  std::uint32_t SequenceNumber() const { return LoadLe32(m_body); }
  std::uint64_t FileTime() const { return LoadLe64(m_body + 4); }  // 100 ns since 1601, UTC
  std::uint8_t Component() const { return m_body[12]; }
  std::uint8_t Category() const { return m_body[14]; }
  std::uint8_t SourceFile() const { return m_body[16]; }
  std::uint8_t Machine() const { return m_body[18]; }
  std::uint8_t App() const { return m_body[19]; }
  std::uint8_t Severity() const { return m_body[20]; }
  std::uint8_t Attribute() const { return m_body[21]; }
  std::uint32_t SourceLine() const { return LoadLe32(m_body + 22); }
  std::uint16_t Pid() const { return LoadLe16(m_body + 26); }
  std::uint16_t Tid() const { return LoadLe16(m_body + 28); }
  std::uint64_t TicCount() const { return LoadLe64(m_body + 30); }

 private:
  const std::uint8_t* m_body;
};

// The text that begins at `position`: up to its NUL, or up to the end of the file.
inline std::string_view OldTextAt(Bytes bytes, std::uint64_t position) {
  if (position >= bytes.size()) return {};
  const auto* const text = reinterpret_cast<const char*>(bytes.data() + position);
  return {text, strnlen(text, bytes.size() - position)};
}

// A sink has:
//   void OnName(OldName kind, std::uint8_t key, std::string_view text);
//   bool OnTrace(const OldTrace& trace, std::string_view text);   false ends the walk
//   void OnUnknownTag(std::uint64_t position);
//   void OnCutRecord(std::uint64_t position);  may be missing: the last one, cut by the end
//   bool OnProgress(std::uint64_t position);   at every 1024th record; false ends the walk
// Returns the position reached, which may be beyond the end when the last record is cut.
template <class Sink>
std::uint64_t WalkOldTrc(Bytes bytes, Sink&& sink) {
  const std::uint8_t* const data = bytes.data();
  const std::uint64_t size = bytes.size();
  std::uint64_t position = kOldTrcHeaderBytes;
  const bool begins = position < size;  // not in a header without its NUL
  std::uint64_t records = 0, record = position;
  while (position < size) {
    record = position;
    const std::uint8_t tag = data[position++];
    if (tag == kOldTagTrace) {
      const OldTrace trace(data + position);
      const std::string_view text = OldTextAt(bytes, position + OldTrace::kFixedBytes);
      position += OldTrace::kFixedBytes + text.size() + 1;
      if (!sink.OnTrace(trace, text)) break;
    } else if (tag < kOldNameKinds) {
      const std::uint8_t key = data[position];
      position += tag < static_cast<std::uint8_t>(OldName::Component) ? 1 : 2;
      const std::string_view text = OldTextAt(bytes, position);
      position += text.size() + 1;
      sink.OnName(static_cast<OldName>(tag), key, text);
    } else {
      sink.OnUnknownTag(position - 1);
    }
    if (++records % kRecordsPerCheck == 0 && !sink.OnProgress(position)) break;
  }
  if constexpr (requires { sink.OnCutRecord(record); })
    if (begins && position > size) sink.OnCutRecord(record);
  return position;
}
