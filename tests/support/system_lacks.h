// What the system refuses while one of these exists. Threads  Any; the whole process is concerned.
#pragma once

#include <gtest/gtest.h>
#include <pthread.h>
#include <sys/resource.h>

// At most so much of something, for instance of descriptors.
class SoftLimit {
 public:
  SoftLimit(__rlimit_resource_t what, rlim_t most) : m_what(what) {
    getrlimit(m_what, &m_before);
    rlimit limit = m_before;
    limit.rlim_cur = most;
    EXPECT_EQ(setrlimit(m_what, &limit), 0);
  }
  ~SoftLimit() { setrlimit(m_what, &m_before); }
  SoftLimit(const SoftLimit&) = delete;
  SoftLimit& operator=(const SoftLimit&) = delete;

 private:
  const __rlimit_resource_t m_what;
  rlimit m_before{};
};

// While it lives the system refuses every new thread: no address space has room for its stack.
class NoThreads {
 public:
  NoThreads() {
    pthread_getattr_default_np(&m_before);
    pthread_attr_t huge = m_before;
    EXPECT_EQ(pthread_attr_setstacksize(&huge, SIZE_MAX / 0x40000 * 0x30000), 0);
    EXPECT_EQ(pthread_setattr_default_np(&huge), 0);
  }
  ~NoThreads() { pthread_setattr_default_np(&m_before); }
  NoThreads(const NoThreads&) = delete;
  NoThreads& operator=(const NoThreads&) = delete;

 private:
  pthread_attr_t m_before;
};
