// The identity and the state of a file: to notice that another program has moved or changed it.
//
// Errors   No mark when there is no such file or its status cannot be read.
// Threads  Any.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct FileMark {
  std::uint64_t device = 0, inode = 0;
  std::int64_t size = 0;
  std::int64_t writtenNs = 0;  // the time of its last write
  std::int64_t changedNs = 0;  // the time of the last change, also of its name, rights or links

  static std::optional<FileMark> Of(int descriptor);
  // The file that the path leads to, also over symbolic links.
  static std::optional<FileMark> At(const std::string& path);

  bool operator==(const FileMark&) const = default;
  bool IsSameFile(const FileMark& other) const {
    return device == other.device && inode == other.inode;
  }
  // The content is unchanged, whatever happened to its name since then.
  bool IsUnwritten(const FileMark& other) const {
    return IsSameFile(other) && size == other.size && writtenNs == other.writtenNs;
  }
};
