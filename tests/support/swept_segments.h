// Whether the files of applications beside a socket have been taken: afterwards only their counts
// are left.
#pragma once

#include <errno.h>
#include <unistd.h>

#include <algorithm>

#include "quor/link/segment_folder.h"
#include "quor/ring/segment_map.h"

// Segments that have more than a count: of live applications, and of those that are not taken yet.
inline std::size_t SegmentsNotTaken(const SegmentFolder& folder) {
  const std::vector<std::string> names = folder.Names();
  return static_cast<std::size_t>(
      std::count_if(names.begin(), names.end(), [&folder](const std::string& name) {
        const int file = folder.OpenFile(name);
        if (file < 0) return errno != ENOENT;  // removed just now; what cannot be opened is left
        FinishedSegment rest;
        const bool taken = ReadFinishedSegment(file, &rest);
        close(file);
        return !taken;
      }));
}

inline bool AreSegmentsSwept(const std::string& socketPath) {
  SegmentFolder folder;
  return folder.Open(socketPath) && SegmentsNotTaken(folder) == 0;
}
