// Time in which this process ran. Silence of a peer is measured in it: while this process was
// stopped, by a signal or with its whole machine, it read nothing, and its peer perhaps was stopped
// as well.
//
// Shape    Follows the steady clock, but never goes further than one step beyond the last Tick.
// Threads  One.
#pragma once

#include <algorithm>
#include <chrono>

class RunningTime {
 public:
  using Clock = std::chrono::steady_clock;

  // Since the beginning.
  Clock::duration Now() const { return m_elapsed + std::min(Clock::now() - m_ticked, m_step); }
  // Call it again within `step`.
  void Tick(Clock::duration step) {
    const Clock::time_point now = Clock::now();
    m_elapsed += std::min(now - m_ticked, m_step);
    m_ticked = now;
    m_step = step;
  }

 private:
  Clock::duration m_elapsed{0}, m_step{0};
  Clock::time_point m_ticked = Clock::now();
};
