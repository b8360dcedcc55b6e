// Where a folder of a test lies on a disk, the segments beside its socket lie elsewhere in memory.
#pragma once

#include <filesystem>
#include <string>

inline void RemoveSegments(const std::string& folder) {
  std::error_code none;
  const std::filesystem::path link = folder + "/segments";
  if (std::filesystem::is_symlink(link, none))
    std::filesystem::remove_all(std::filesystem::read_symlink(link, none), none);
}
