// How much of the service's one thread some work may have: a part of the time that passes. What was
// not used is kept for a burst, and what was used too much is a debt.
//
// Threads  One.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdint>

class WorkShare {
 public:
  using Clock = std::chrono::steady_clock;
  static constexpr std::int64_t kBurstNs = 20'000'000;

  // One in `part` of the time.
  explicit WorkShare(unsigned part, Clock::time_point now = Clock::now())
      : m_part(part), m_at(now) {}

  // Nanoseconds that may be worked now. 0 or less: none.
  std::int64_t Left(Clock::time_point now) {
    const auto passed = std::chrono::nanoseconds(now - m_at).count();
    m_left = std::min<std::int64_t>(kBurstNs, m_left + passed / m_part);
    m_at = now;
    return m_left;
  }
  void Worked(std::int64_t ns) { m_left -= ns; }
  // Nanoseconds until at least `least` may be worked; 0: now.
  std::int64_t WaitFor(std::int64_t least, Clock::time_point now) {
    return std::max<std::int64_t>(0, (least - Left(now)) * m_part);
  }

 private:
  std::int64_t m_part;
  Clock::time_point m_at;
  std::int64_t m_left = kBurstNs;
};
