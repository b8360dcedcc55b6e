// A full disk: while it exists, no file of this process grows beyond so many bytes.
#pragma once

#include <signal.h>
#include <sys/resource.h>

class FileLimit {
 public:
  // Without a handler the first write beyond the limit would end the process.
  explicit FileLimit(rlim_t bytes) : m_handler(signal(SIGXFSZ, SIG_IGN)) {
    getrlimit(RLIMIT_FSIZE, &m_before);
    rlimit limit = m_before;
    limit.rlim_cur = bytes;
    setrlimit(RLIMIT_FSIZE, &limit);
  }
  ~FileLimit() {
    setrlimit(RLIMIT_FSIZE, &m_before);
    signal(SIGXFSZ, m_handler);
  }
  FileLimit(const FileLimit&) = delete;
  FileLimit& operator=(const FileLimit&) = delete;

 private:
  sighandler_t m_handler;
  rlimit m_before = {};
};
