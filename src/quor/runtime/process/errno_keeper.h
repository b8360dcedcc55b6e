// Restores errno. The application may look at it after it has traced.
//
// Threads  Any, also in a signal handler.
#pragma once

#include <cerrno>

class ErrnoKeeper {
 public:
  ErrnoKeeper() noexcept : m_error(errno) {}
  ~ErrnoKeeper() { errno = m_error; }
  ErrnoKeeper(const ErrnoKeeper&) = delete;
  ErrnoKeeper& operator=(const ErrnoKeeper&) = delete;

 private:
  const int m_error;
};
