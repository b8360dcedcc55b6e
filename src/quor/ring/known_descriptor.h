// A descriptor of the runtime in a process that is not its own: the application may close any
// number at any time and open another file under it, as every daemon does that closes all.
//
// Shape    Remembers which file it is (device and inode), and gives the number away only while it
//          still is that file.
// Owner    Holds the file; lets go of it at the end, unless the number is another file's by then.
// Errors   -1: it is lost, or there never was one.
// Threads  One at a time.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <utility>

class KnownDescriptor {
 public:
  KnownDescriptor() = default;
  // Takes the descriptor; -1 for none. The numbers of standard input, output and error are left to
  // the application, which may not have opened them yet.
  explicit KnownDescriptor(int number);
  ~KnownDescriptor() { Close(); }
  KnownDescriptor(KnownDescriptor&& other) noexcept { *this = std::move(other); }
  KnownDescriptor& operator=(KnownDescriptor&& other) noexcept;

  // Ask before every use: two calls may give different answers.
  int Get() const {
    struct stat status {};
    return Get(&status);
  }
  // The same, with what the file says of itself.
  int Get(struct stat* status) const { return IsStillThere(status) ? m_number : -1; }
  bool IsOpen() const { return m_number >= 0; }  // or was, when it was last looked at
  void Close();

  dev_t Device() const { return m_device; }
  ino_t Inode() const { return m_inode; }

 private:
  bool IsStillThere(struct stat* status) const;

  int m_number = -1;
  dev_t m_device = 0;
  ino_t m_inode = 0;
};
