// How long this thread has run so far, in nanoseconds. Time in which others had its processor does
// not count.
//
// Threads  Any; each has its own time.
#pragma once

#include <time.h>

#include <cstdint>

inline std::uint64_t ThreadNanoseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 +
         static_cast<std::uint64_t>(time.tv_nsec);
}
