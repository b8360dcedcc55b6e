// A bell in shared memory: wakes who waits for it in another process without any descriptor, so
// that it rings also in a process that has closed all of them.
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

using Bell = std::atomic<std::uint32_t>;

inline void Ring(Bell& bell) noexcept {
  const int error = errno;
  bell.fetch_add(1, std::memory_order_release);
  syscall(SYS_futex, &bell, FUTEX_WAKE, INT_MAX, nullptr, nullptr, 0);
  errno = error;
}

// Returns when the bell no longer shows `heard`, after the time, or for no reason. Negative: waits
// without end.
inline void AwaitBell(Bell& bell, std::uint32_t heard, int milliseconds) noexcept {
  const timespec time{milliseconds / 1000, milliseconds % 1000 * 1'000'000L};
  syscall(SYS_futex, &bell, FUTEX_WAIT, heard, milliseconds < 0 ? nullptr : &time, nullptr, 0);
}
