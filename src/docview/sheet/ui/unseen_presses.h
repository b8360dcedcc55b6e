// Which presses of the user happened while a step of the wizard was at work. He pressed them
// without seeing what the step would show.
//
// Shape    Events carry the time of the window system, which has its own beginning. What an event
//          shows at least is that it happened before it arrived, so the shortest way tells best
//          how far the two times are apart.
// Threads  One.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

class UnseenPresses {
 public:
  // All times in milliseconds; `now` on the program's clock, `stamp` on that of the events.
  void StepBegins(std::int64_t now) { m_began = now; }
  void StepEnds(std::int64_t now) { m_ended = now; }
  // Any event of mouse or keyboard arrives. 0 is no time.
  void Arrives(std::uint64_t stamp, std::int64_t now) {
    if (stamp != 0) m_apart = std::min(m_apart, now - static_cast<std::int64_t>(stamp));
  }
  // REQUIRES: the press has arrived. One from a clock of another kind counts as seen.
  bool IsUnseen(std::uint64_t stamp) const {
    if (stamp == 0) return false;
    const std::int64_t happened = static_cast<std::int64_t>(stamp) + m_apart;
    return happened >= m_began && happened < m_ended;
  }

 private:
  std::int64_t m_began = 0, m_ended = 0;  // the last step
  std::int64_t m_apart = std::numeric_limits<std::int64_t>::max();
};
