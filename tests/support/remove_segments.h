// If a test's folder is on a disk, the segments beside each socket in it are elsewhere, in memory.
#pragma once

#include <filesystem>
#include <string>

inline void RemoveSegments(const std::string& folder) {
  namespace fs = std::filesystem;
  std::error_code none;
  const fs::recursive_directory_iterator end;
  for (fs::recursive_directory_iterator at(folder, none); !none && at != end; at.increment(none)) {
    if (at->path().filename() != "segments" || !at->is_symlink(none)) continue;
    const fs::path target = fs::read_symlink(at->path(), none);
    if (target.string().starts_with("/dev/shm/quor-")) fs::remove_all(target, none);
  }
}
