// A regular file that somebody else has named: nothing else is opened, nor waited for.
//
// Owner    Closes its descriptor, unless it was released.
// Errors   An empty one: there is no such file, it may not be read, it is a device, a FIFO or a
//          folder, or it is empty or too large.
// Threads  One at a time.
#pragma once

#include <string>

class RegularFile {
 public:
  RegularFile() = default;
  explicit RegularFile(const std::string& path);
  RegularFile(RegularFile&& other) noexcept : m_descriptor(other.Release()) {}
  RegularFile& operator=(RegularFile&& other) noexcept;
  ~RegularFile();

  explicit operator bool() const { return m_descriptor >= 0; }
  int Descriptor() const { return m_descriptor; }
  int Release();

 private:
  int m_descriptor = -1;
};
