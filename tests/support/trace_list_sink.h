// What a walk over a trace file finds, in a list of traces.
#pragma once

#include <cstdint>
#include <string_view>

#include "records/trace_list.h"

struct TraceListSink {
  TraceList_t& traces;
  void OnName(NameId, std::string_view) {}
  void OnTrace(const std::uint8_t* record) { traces.EmplaceRecord(record); }
  void OnUnknownTag(std::uint64_t) {}
  bool OnProgress(std::uint64_t) { return true; }
};
