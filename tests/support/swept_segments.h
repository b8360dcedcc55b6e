// Whether all that applications left beside a socket has been taken: what is still there is no more
// than the count of it.
#pragma once

#include <errno.h>
#include <unistd.h>

#include <algorithm>

#include "quor/ring/segment_folder.h"
#include "quor/ring/segment_map.h"

inline bool AreSegmentsSwept(const std::string& socketPath) {
  SegmentFolder folder;
  if (!folder.Open(socketPath)) return false;
  const std::vector<std::string> names = folder.Names();
  return std::all_of(names.begin(), names.end(), [&folder](const std::string& name) {
    const int file = folder.OpenFile(name);
    if (file < 0) return errno == ENOENT;  // removed just now; what cannot be opened is left behind
    SegmentRest rest;
    const bool taken = ReadRest(file, &rest);
    close(file);
    return taken;
  });
}
