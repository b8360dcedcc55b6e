// An event in shared memory (a futex). It wakes a waiting thread of another process without any
// descriptor, so it also works in a process that has closed all its descriptors.
//
// Threads  Any, also in a signal handler; errno is left alone.
#pragma once

#include <linux/futex.h>
#include <sys/syscall.h>
#include <time.h>
#include <unistd.h>

#include <atomic>
#include <cerrno>
#include <climits>
#include <cstdint>

using WakeEvent = std::atomic<std::uint32_t>;

inline void Signal(WakeEvent& event) noexcept {
  const int error = errno;
  event.fetch_add(1, std::memory_order_release);
  syscall(SYS_futex, &event, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
  errno = error;
}

// Returns when the value of the event is no longer `seen`, after `milliseconds`, or spuriously.
// A negative time means no limit.
inline void AwaitWake(WakeEvent& event, std::uint32_t seen, int milliseconds) noexcept {
  const timespec time{milliseconds / 1000, milliseconds % 1000 * 1'000'000L};
  syscall(SYS_futex, &event, FUTEX_WAIT, seen, milliseconds < 0 ? nullptr : &time, nullptr, 0);
}

inline void AwaitWakeNs(WakeEvent& event, std::uint32_t seen, std::uint64_t nanoseconds) noexcept {
  const timespec time{static_cast<time_t>(nanoseconds / 1'000'000'000),
                      static_cast<long>(nanoseconds % 1'000'000'000)};
  syscall(SYS_futex, &event, FUTEX_WAIT, seen, &time, nullptr, 0);
}
