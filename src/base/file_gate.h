// Opening files with the sharing rules that this program lives by.
//
// A file that is open for reading is not written by us or by another program of ours, and a file
// that is being written is open nowhere else. Linux knows no such modes, so they are made of a list
// in this process, by device and inode (hard and symbolic links to one file are one file), and of
// flock between processes, where the file system has it.
//
// Owner    The descriptor is closed, and the file's entry goes, with the OpenFile.
// Errors   An empty OpenFile and a reason for a person in `why`.
// Threads  Any.
#pragma once

#include <cstdint>
#include <string>

class OpenFile {
 public:
  OpenFile() = default;
  OpenFile(OpenFile&& other) noexcept;
  OpenFile& operator=(OpenFile&& other) noexcept;
  ~OpenFile();

  explicit operator bool() const { return m_descriptor >= 0; }
  int Descriptor() const { return m_descriptor; }
  // False when the kernel reports at the close that earlier bytes were lost. Closing twice is good.
  bool Close();

 private:
  friend OpenFile OpenForReading(const std::string& path, std::string* why);
  friend OpenFile CreateForWriting(const std::string& path, std::string* why);
  friend OpenFile HoldForReplacing(const std::string& path, std::string* why);
  enum class Way { Read, Create, Hold };
  static OpenFile Open(const std::string& path, Way way, std::string* why);
  int m_descriptor = -1;
  std::uint64_t m_device = 0, m_inode = 0;
  bool m_listed = false;  // in this process's list of open files
};

// An existing regular file, shared with other readers only. Never waits (a FIFO is refused).
OpenFile OpenForReading(const std::string& path, std::string* why = nullptr);

// A file made anew, shared with nobody. An existing one is emptied only once it is known that no
// one has it open, so that a failed creation leaves it as it was.
OpenFile CreateForWriting(const std::string& path, std::string* why = nullptr);

// An existing file as CreateForWriting takes it, whose bytes stay: nobody opens it until the new
// one, which is written elsewhere, has taken its place.
OpenFile HoldForReplacing(const std::string& path, std::string* why = nullptr);
