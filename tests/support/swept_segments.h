// Whether all that applications left beside a socket has been taken: what is still there is no more
// than the count of it.
#pragma once

#include <algorithm>

#include "quor/ring/segment_folder.h"
#include "quor/ring/segment_map.h"

inline bool AreSegmentsSwept(const std::string& socketPath) {
  SegmentFolder folder;
  if (!folder.Open(socketPath)) return false;
  const std::vector<std::string> names = folder.Names();
  return std::all_of(names.begin(), names.end(), [&folder](const std::string& name) {
    const int file = folder.OpenFile(name);
    SegmentRest rest;
    const bool taken = file < 0 || ReadRest(file, &rest);
    if (file >= 0) close(file);
    return taken;
  });
}
