// How a file has changed since it was opened.
//
// Threads  Plain data.
#pragma once

#include <cstdint>
#include <string>

struct FileChange {
  enum class Kind {
    None,
    Shorter,     // cut, or emptied and written again
    Unreadable,  // a part of it: it was cut and has grown again, or a disk or a share failed
    Written,     // other than by appending
  };
  Kind kind = Kind::None;
  std::uint64_t missingBytes = 0;  // if Shorter

  bool Any() const { return kind != Kind::None; }
  bool operator==(const FileChange&) const = default;
};

// "the file has become shorter, 406 bytes are missing"; empty without a change.
std::string FileChangeText(const FileChange& change);
