// The fields of a trace that the procedure tree needs, read in one go.
#pragma once

#include <cstdint>

#include "records/trace_event.h"

enum class BlockMark : std::uint8_t { None, Begin, End };

struct TraceFacts {
  explicit TraceFacts(const TraceEvent_i& event);

  // One number for machine, application, process and thread; the upper parts name the levels above.
  std::uint64_t ThreadKey() const {
    return std::uint64_t{machine} << 48 | std::uint64_t{application} << 32 |
           std::uint64_t{process} << 16 | thread;
  }

  NameId machine, application, process, thread;
  std::uint32_t sequenceNumber;
  std::uint64_t tic;
  BlockMark mark;  // does the text begin with "Begin: " or "End: "?
};
