// The wait of a starting process for the settings that its service keeps for it.
//
// Shape    At the start of the first segment the time of the wait is set. Each thread waits at its
//          first trace, or its first use of a point, until the service has answered, no service can
//          be reached, or that time is over. After that a wait costs one load.
// Threads  Any, also in a signal handler.
#pragma once

#include <time.h>

#include "quor/ring/wake_event.h"

class FirstAnswer {
 public:
  static constexpr unsigned kWaitMs = 2, kWaitMaxMs = 10'000;

  void Expect(unsigned milliseconds) {
    m_untilNs.store(NowNs() + std::uint64_t{milliseconds} * 1'000'000);
  }
  void HasCome() {
    if (m_untilNs.load(std::memory_order_relaxed) != 0 && m_untilNs.exchange(0) != 0)
      Signal(m_event);
  }
  void Await() {
    while (m_untilNs.load(std::memory_order_acquire) != 0) {
      const std::uint32_t seen = m_event.load();
      const std::uint64_t until = m_untilNs.load(), now = NowNs();
      if (until == 0) return;
      if (now >= until) return HasCome();
      AwaitWakeNs(m_event, seen, until - now);
    }
  }
  // In a fork's child, which has the settings of its parent.
  void Forget() { m_untilNs.store(0); }

 private:
  static std::uint64_t NowNs() {
    timespec time{};
    clock_gettime(CLOCK_MONOTONIC, &time);
    return static_cast<std::uint64_t>(time.tv_sec) * 1'000'000'000u +
           static_cast<std::uint64_t>(time.tv_nsec);
  }

  std::atomic<std::uint64_t> m_untilNs{0};  // 0: nothing is expected
  WakeEvent m_event{0};
};
