// A sample trace in a file of the older format: see docs/formats.md.
//
// Shape    The name records that it needs, then the trace. The older format has no stacks.
// Owner    Holds the bytes of the last encoded trace.
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
  // Valid until the next call. REQUIRES: the process's and the thread's names are numbers below
  // 65536, and no text has a NUL.
  std::string_view Encode(const TraceEvent_i& trace, const NameMap& names);

 private:
  static constexpr int kNobody = -1;

  std::uint8_t KeyOf(OldName kind, NameId id, const NameMap& names);
  void Put(std::uint64_t value, int bytes);

  // The id that each key of a kind currently stands for.
  std::array<std::array<int, 256>, kOldNameKinds> m_owners;
  std::string m_bytes;
};
