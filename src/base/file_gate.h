// Opens files with this program's sharing rules.
//
// A file that is open for reading is not written by us or by another program of ours. A file that
// is being written is open nowhere else. Linux has no such modes. So this process keeps a list of
// its files by device and inode (hard and symbolic links to one file are one file). Between
// processes flock is used, if the file system has it.
//
// Owner    The end of the OpenFile closes the descriptor and removes the file's entry.
// Errors   An empty OpenFile and a reason for the user in `why`.
// Threads  Any.
#pragma once

#include <cstdint>
#include <string>

// Refuse: a symbolic link under the name is an error. For a file that nobody has named, in a folder
// where others may have put a link.
enum class Links { Follow, Refuse };

class OpenFile {
 public:
  OpenFile() = default;
  OpenFile(OpenFile&& other) noexcept;
  OpenFile& operator=(OpenFile&& other) noexcept;
  ~OpenFile();

  explicit operator bool() const { return m_descriptor >= 0; }
  int Descriptor() const { return m_descriptor; }
  // False when the kernel reports at the close that earlier bytes were lost. May be called twice.
  bool Close();

 private:
  friend OpenFile OpenForReading(const std::string& path, std::string* why);
  friend OpenFile CreateForWriting(const std::string& path, std::string* why, Links links);
  friend OpenFile HoldForReplacing(const std::string& path, std::string* why);
  enum class Way { Read, Create, Hold };
  static OpenFile Open(const std::string& path, Way way, std::string* why, int flags = 0);
  int m_descriptor = -1;
  std::uint64_t m_device = 0, m_inode = 0;
  bool m_listed = false;  // in this process's list of open files
};

// An existing regular file, shared with other readers only. Never waits (a FIFO is refused).
OpenFile OpenForReading(const std::string& path, std::string* why = nullptr);

// A new file, opened exclusively. An existing one is emptied only when it is known that nobody has
// it open, so that a failed creation leaves it as it was.
OpenFile CreateForWriting(const std::string& path, std::string* why = nullptr,
                          Links links = Links::Follow);

// Holds an existing file like CreateForWriting, but keeps its bytes: nobody opens it until the new
// file, which is written elsewhere, has replaced it.
OpenFile HoldForReplacing(const std::string& path, std::string* why = nullptr);
