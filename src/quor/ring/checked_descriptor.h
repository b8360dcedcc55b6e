// A descriptor of the runtime in a process that belongs to the application. The application may
// close any descriptor at any time and open another file under the same number, as a daemon does
// that closes all descriptors at its start.
//
// Shape    Remembers the device and inode of its file. Returns the number only while the number
//          still refers to that file.
// Owner    Owns the file. Closes it at the end, unless the number refers to another file by then.
// Errors   -1: the descriptor is lost, or there never was one.
// Threads  One at a time.
#pragma once

#include <sys/stat.h>
#include <sys/types.h>

#include <utility>

class CheckedDescriptor {
 public:
  CheckedDescriptor() = default;
  // Takes ownership of the descriptor; -1 for none. It never occupies the numbers of standard
  // input, output and error, which the application may open later.
  explicit CheckedDescriptor(int number);
  ~CheckedDescriptor() { Close(); }
  CheckedDescriptor(CheckedDescriptor&& other) noexcept { *this = std::move(other); }
  CheckedDescriptor& operator=(CheckedDescriptor&& other) noexcept;

  // Call it before every use: two calls may give different answers.
  int Get() const {
    struct stat status {};
    return Get(&status);
  }
  // The same; `status` receives the status of the file.
  int Get(struct stat* status) const { return IsStillThere(status) ? m_number : -1; }
  bool IsOpen() const { return m_number >= 0; }  // as of the last look
  void Close();

  dev_t Device() const { return m_device; }
  ino_t Inode() const { return m_inode; }

 private:
  bool IsStillThere(struct stat* status) const;

  int m_number = -1;
  dev_t m_device = 0;
  ino_t m_inode = 0;
};
