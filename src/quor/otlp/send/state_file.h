// A file that one process at a time keeps its state in.
//
// Shape    Beside it stands a file ".lock", which is locked while the object lives.
// Errors   False and a reason. After a Write that failed the file has its bytes of before.
// Threads  One.
#pragma once

#include <string>

class StateFile {
 public:
  StateFile() = default;
  ~StateFile();
  StateFile(const StateFile&) = delete;
  StateFile& operator=(const StateFile&) = delete;

  // Makes its folder. `bytes`: what is in it; empty: nothing.
  bool Open(const std::string& path, std::string* bytes, std::string* why);
  // It is on the disk when this has returned.
  bool Write(const std::string& bytes, std::string* why);

 private:
  std::string m_path;
  int m_lock = -1;
};
