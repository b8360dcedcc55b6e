// What this thread has cost so far.
//
// Threads  Any; each has its own costs.
#pragma once

#include <sys/resource.h>
#include <time.h>

#include <cstdint>

// Nanoseconds. Time in which others had its processor does not count.
inline std::uint64_t ThreadNanoseconds() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000 +
         static_cast<std::uint64_t>(time.tv_nsec);
}

// Page faults.
inline std::uint64_t ThreadFaults() {
  rusage usage{};
  getrusage(RUSAGE_THREAD, &usage);
  return static_cast<std::uint64_t>(usage.ru_minflt) + static_cast<std::uint64_t>(usage.ru_majflt);
}
