// Waits until something may have happened to a file or its name.
//
// Owner    Owns its descriptor. Where the system reports no changes, it only lets time pass.
// Threads  One.
#pragma once

#include <string>

class FileWatch {
 public:
  explicit FileWatch(const std::string& path) : m_path(path) {}
  ~FileWatch();
  FileWatch(const FileWatch&) = delete;
  FileWatch& operator=(const FileWatch&) = delete;

  // The file that is looked at from now on.
  void Follow(int descriptor);
  // Returns at the latest after a second, and at a signal. False: nobody reads standard output.
  bool Wait();

 private:
  bool Begin();

  const std::string m_path;
  bool m_begun = false;
  int m_notes = -1;
  int m_file = -1;  // the number of its watch
};
