// A sample trace as it stands in a file of the older format: see docs/formats.md.
//
// Shape    The name records that it needs, then the trace. The older format has no stacks.
// Owner    Holds the bytes of the trace last encoded.
// Threads  One at a time.
#pragma once

#include <array>
#include <string>
#include <string_view>

#include "records/old_walk.h"
#include "records/trace_event.h"

class OldSample {
 public:
  OldSample();
  // Good until the next one. REQUIRES: the process's and the thread's names are numbers below
  // 65536, and no text has a NUL.
  std::string_view Encode(const TraceEvent_i& trace, const NameMap& names);

 private:
  static constexpr int kNobody = -1;

  std::uint8_t KeyOf(OldName kind, NameId id, const NameMap& names);
  void Put(std::uint64_t value, int bytes);

  // Which id each key of a kind stands for now.
  std::array<std::array<int, 256>, kOldNameKinds> m_owners;
  std::string m_bytes;
};
