// A lock for the slow paths of the runtime. It knows its owner, so that a signal handler that
// interrupted the owner gets an error instead of waiting for ever.
//
// Threads  Any, also in a signal handler. Never held over a call of the application.
#pragma once

#include <sched.h>
#include <time.h>
#include <unistd.h>

#include <atomic>

class OwnerLock {
 public:
  // False if this thread holds the lock already.
  bool Lock() noexcept {
    const int self = gettid();
    for (int tries = 0;;) {
      int expected = 0;
      if (m_owner.compare_exchange_weak(expected, self, std::memory_order_acquire)) return true;
      if (expected == self) return false;
      if (expected == 0) continue;
      // If the owner has a lower real-time priority than this thread, only sleep lets it run.
      const timespec pause{0, kPauseNs};
      if (++tries <= kYields)
        sched_yield();
      else
        nanosleep(&pause, nullptr);
    }
  }
  void Unlock() noexcept { m_owner.store(0, std::memory_order_release); }
  // In the child of a fork: `held` says whether code that this thread interrupted still holds it.
  void AfterFork(bool held) noexcept {
    m_owner.store(held ? gettid() : 0, std::memory_order_relaxed);
  }

 private:
  static constexpr int kYields = 50;
  static constexpr long kPauseNs = 50'000;
  std::atomic<int> m_owner{0};
};

// Holds a lock for a scope, if Lock succeeds.
class OwnerGuard {
 public:
  explicit OwnerGuard(OwnerLock& lock) noexcept : m_lock(lock), m_held(lock.Lock()) {}
  ~OwnerGuard() {
    if (m_held) m_lock.Unlock();
  }
  OwnerGuard(const OwnerGuard&) = delete;
  OwnerGuard& operator=(const OwnerGuard&) = delete;
  explicit operator bool() const noexcept { return m_held; }

 private:
  OwnerLock& m_lock;
  const bool m_held;
};
