// Which presses of the user did not see what a step of the wizard has shown: those that happened
// while it was at work, and the second one of a double click whose first one took the step.
//
// Shape    Events carry the time of the window system, which has its own beginning. What an event
//          shows at least is that it happened before it arrived, so the shortest way tells best
//          how far the two times are apart.
// Threads  One.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstdlib>
#include <limits>
#include <utility>

// A press of the mouse, in pixels of the screen.
struct MousePress {
  std::uint64_t stamp = 0;
  int x = 0, y = 0;
};
// Two presses that are at most this far apart, in time and in each direction, are a double click.
struct DoubleClickLimits {
  int ms = 0, px = 0;
};

class UnseenPresses {
 public:
  // All times in milliseconds; `now` on the program's clock, `stamp` on that of the events.
  void StepBegins(std::int64_t now) {
    m_began = now;
    m_stepPress = std::exchange(m_press, {});
  }
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

  // A press on a button whose release takes a step.
  void Presses(const MousePress& press) { m_press = press; }
  // A press on anything else: the next one is no part of a double click.
  void PressesElsewhere() { m_stepPress = {}; }
  // Is it the second press of a double click whose first one took the last step?
  bool IsSecond(const MousePress& press, const DoubleClickLimits& limits) const {
    if (press.stamp == 0 || m_stepPress.stamp == 0 || press.stamp < m_stepPress.stamp) return false;
    return press.stamp - m_stepPress.stamp < static_cast<std::uint64_t>(limits.ms) &&
           std::abs(press.x - m_stepPress.x) <= limits.px &&
           std::abs(press.y - m_stepPress.y) <= limits.px;
  }

 private:
  MousePress m_press, m_stepPress;
  std::int64_t m_began = 0, m_ended = 0;  // the last step
  std::int64_t m_apart = std::numeric_limits<std::int64_t>::max();
};
