// Reads a trace file that an application wrote itself.
#pragma once

#include <algorithm>
#include <cstdint>
#include <fstream>
#include <map>
#include <sstream>
#include <string>
#include <string_view>
#include <vector>

#include "records/trc_walk.h"

// The traces of a file, with their numbers; `whole`: each has its names, and there is nothing in
// between.
struct FileTraces {
  std::map<NameId, std::string> names;
  std::vector<std::string> texts;
  std::vector<std::uint32_t> numbers;
  bool whole = true;

  void OnName(NameId id, std::string_view text) { names[id] = text; }
  void OnTrace(const std::uint8_t* record) {
    const RawTrace raw(record);
    // Every id has its name in this file, before the trace.
    for (const NameId id : {raw.MachineId(), raw.AppId(), raw.ComponentId(), raw.CategoryId(),
                            raw.PidId(), raw.TidId(), raw.SourceFileId()})
      whole = whole && names.count(id) == 1;
    texts.push_back(names[raw.ComponentId()] == "Work"
                        ? std::string(raw.Text())
                        : names[raw.ComponentId()] + "/" + names[raw.CategoryId()] + ": " +
                              std::string(raw.Text()));
    numbers.push_back(raw.SequenceNumber());
  }
  void OnUnknownTag(std::uint64_t) { whole = false; }
  bool OnProgress(std::uint64_t) { return true; }
};

inline FileTraces ReadTrc(const std::string& path) {
  std::ifstream file(path, std::ios::binary);
  std::ostringstream content;
  content << file.rdbuf();
  std::string bytes = content.str();
  FileTraces traces;
  traces.whole = bytes.compare(0, kTrcHeaderBytes, std::string(kTrcHeader, kTrcHeaderBytes)) == 0;
  const std::size_t size = bytes.size();
  bytes.resize(size + 131115);
  const std::uint64_t end =
      WalkTrc({reinterpret_cast<const std::uint8_t*>(bytes.data()), size}, traces);
  traces.whole = traces.whole && end == std::max(size, kTrcHeaderBytes);
  return traces;
}
