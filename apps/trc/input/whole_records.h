// The records of a trace file whose bytes are still coming.
//
// Shape    As for WalkTrc, but what the end of the bytes cuts is left for the next time.
// Errors   None; nothing beyond the bytes is read.
// Threads  Touches only its arguments.
#pragma once

#include "records/name_record.h"
#include "records/raw_trace.h"

// A sink has:
//   void OnName(NameId id, std::string_view utf8);
//   bool OnTrace(Bytes record);                     behind the tag; false ends the walk
//   void OnUnknownTag(std::uint64_t position);
// `position` is that of the first byte in the file. Gives the bytes of the whole records.
template <class Sink>
std::size_t WalkWholeRecords(Bytes bytes, std::uint64_t position, Sink&& sink) {
  std::size_t at = 0;
  for (bool goesOn = true; goesOn && at < bytes.size();) {
    const Bytes body = bytes.subspan(at + kTagBytes);
    std::size_t size = 0;
    if (bytes[at] == kTagTrace) {
      size = WholeTraceBytes(body);
      if (size == 0) break;
      goesOn = sink.OnTrace(body.first(size));
    } else if (bytes[at] == kTagName) {
      size = WholeNameBytes(body);
      if (size == 0) break;
      const RawName name(body.data());
      sink.OnName(name.NamedId(), name.Text());
    } else {
      sink.OnUnknownTag(position + at);
    }
    at += kTagBytes + size;
  }
  return at;
}

enum class TrcBegin { Good, Short, Bad };
// Do these bytes begin a trace file? Short: they may, and more of them are needed. Bad: `why` is
// for the user.
TrcBegin BeginOfTrc(Bytes bytes, std::string* why);
