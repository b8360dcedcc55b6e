// One pass over the bytes of a .trc file: see docs/formats.md.
//
// Shape    16-byte header, then tagged records end to end (record_layout.h). Any other tag costs
//          one byte and counts as a record.
// Owner    Borrows `bytes`; the sink copies what it needs.
// Errors   None: a record that the end cuts is the last one. REQUIRES kGuardBytes of readable bytes
//          after the end (MappedFile provides them).
// Threads  Touches only its arguments.
#pragma once

#include <cstdint>
#include <string_view>

#include "base/bytes.h"
#include "records/name_record.h"
#include "records/raw_trace.h"

constexpr char kTrcHeader[16] = "TRC Version 3.1";  // with its NUL
constexpr char kOldTrcHeader[12] = "Version 2.2";   // the older format, with its NUL
constexpr std::size_t kTrcHeaderBytes = sizeof kTrcHeader;
constexpr std::uint64_t kTrcFileBytesMax = 0xFFFFFFFF;  // offsets have 32 bits
constexpr std::uint64_t kRecordsPerCheck = 1024;

enum class TrcVersion { Current, Old, Unknown };
// Compares the bytes up to their first NUL, because the header is a text.
TrcVersion VersionOf(Bytes bytes);

// A sink has:
//   void OnName(NameId id, std::string_view utf8);   cut at its first NUL
//   void OnTrace(const std::uint8_t* record);        the first byte after the tag
//   void OnUnknownTag(std::uint64_t position);
//   void OnCutRecord(std::uint64_t position);  may be missing: the last one, cut by the end
//   bool OnProgress(std::uint64_t position);         at every 1024th record; false ends the walk
// Begins at `position`, where a record begins. Returns the position reached, which may be beyond
// the end when the last record is cut. Positions are 64 bits wide, because a record that crosses
// the end of a file near 4 GiB must not wrap.
template <class Sink>
std::uint64_t WalkTrc(Bytes bytes, Sink&& sink, std::uint64_t position = kTrcHeaderBytes) {
  const std::uint8_t* const data = bytes.data();
  const std::uint64_t size = bytes.size();
  const bool begins = position < size;  // not in a header without its NUL
  std::uint64_t records = 0, record = position;
  while (position < size) {
    record = position;
    const std::uint8_t tag = data[position++];
    if (tag == kTagTrace) {
      const std::uint8_t* const trace = data + position;
      sink.OnTrace(trace);
      position += RawTrace(trace).Size();
    } else if (tag == kTagName) {
      const RawName name(data + position);
      sink.OnName(name.NamedId(), name.Text());
      position += name.Size();
    } else {
      sink.OnUnknownTag(position - 1);
    }
    if (++records % kRecordsPerCheck == 0 && !sink.OnProgress(position)) break;
  }
  if constexpr (requires { sink.OnCutRecord(record); })
    if (begins && position > size) sink.OnCutRecord(record);
  return position;
}
