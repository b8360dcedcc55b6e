// Which file it is and in what state: to notice that another program has moved or changed it.
//
// Errors   Nothing when there is no such file or it cannot be looked at.
// Threads  Any.
#pragma once

#include <cstdint>
#include <optional>
#include <string>

struct FileMark {
  std::uint64_t device = 0, inode = 0;
  std::int64_t size = 0;
  std::int64_t writtenNs = 0;  // the time of its last write
  std::int64_t changedNs = 0;  // or of its last other change, of its name, rights or links

  static std::optional<FileMark> Of(int descriptor);
  // Of what the path leads to, also over symbolic links.
  static std::optional<FileMark> At(const std::string& path);

  bool operator==(const FileMark&) const = default;
  bool IsSameFile(const FileMark& other) const {
    return device == other.device && inode == other.inode;
  }
  // Whatever became of its name since then.
  bool IsUnwritten(const FileMark& other) const {
    return IsSameFile(other) && size == other.size && writtenNs == other.writtenNs;
  }
};
