// trc info: the content of a trace file.
#pragma once

#include <array>
#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "documents/trace_file_doc.h"

struct InfoOptions {
  std::vector<std::string> files;
  bool json = false;
};

int RunInfo(const InfoOptions& options);

// Traces by name id.
using IdCounts = std::vector<std::uint64_t>;

struct FileInfo {
  std::string path;
  const CTraceFileDoc* document = nullptr;
  std::uint64_t records = 0;  // name and trace records
  // By their stored date and time; null when there are no traces.
  const TraceEvent_i* earliest = nullptr;
  const TraceEvent_i* latest = nullptr;
  std::uint64_t earliestPlace = 0, latestPlace = 0;  // in the file
  std::array<std::uint64_t, 3> severities = {};      // Info, Warn, Error
  std::uint64_t otherSeverities = 0;
  IdCounts machines, applications, components, categories;
};

// Both without a line end after the last line.
std::string InfoAsJson(const FileInfo& info);
std::string InfoAsText(const FileInfo& info);
