// A file without a name, in the folder of TMPDIR or /tmp, for what is unpacked or put together. It
// is gone when the program ends, however it ends.
//
// Errors   False and a reason for the user. A file that would fill its file system is refused
//          before it does, and so is one that no trace file can be as long as.
// Threads  One.
#pragma once

#include <cstdint>
#include <string>
#include <string_view>

class PrivateFile {
 public:
  PrivateFile() = default;
  ~PrivateFile();
  PrivateFile(PrivateFile&& other) noexcept;
  PrivateFile& operator=(PrivateFile&& other) noexcept;

  bool Create(std::string* why);
  bool Append(const void* bytes, std::size_t count, std::string* why);
  // For what others write to it by its path.
  bool HasRoomFor(std::uint64_t bytes, std::string* why) const;
  std::uint64_t Size() const { return m_size; }
  // Opens the same file again, as long as this object lives.
  std::string Path() const { return "/proc/self/fd/" + std::to_string(m_descriptor); }

 private:
  int m_descriptor = -1;
  std::uint64_t m_size = 0, m_checkedTo = 0;
  std::string m_folder;
};
