// The names of a document or file by their 16-bit ids.
//
// Machine, application, component, category, process, thread and source file names share one id
// space. An id has a meaning only with the map of the document that the trace came from.
#pragma once

#include <cstdint>
#include <map>
#include <string>

#include "records/name_ids.h"

struct NameEntry_t {
  std::string name;           // UTF-8
  std::uint32_t written = 0;  // not 0: the output file that is being written has this name
};

using NameMap = std::map<NameId, NameEntry_t>;

// The name of `id`; empty if the map has none. Inserts nothing.
inline std::string NameOf(const NameMap& names, NameId id) {
  const auto entry = names.find(id);
  return entry == names.end() ? std::string() : entry->second.name;
}
