#include "pace.h"

#include <algorithm>

namespace {

constexpr std::chrono::milliseconds kShortestSleep{1};
constexpr std::chrono::milliseconds kCatchUp{250};
constexpr double kLongestPauseSeconds = 1e6;  // more would leave the range of the clock
constexpr unsigned kTracesPerLook = 1000;

}  // namespace

void StopSign::Ask() {
  const std::lock_guard lock(m_mutex);
  m_asked = true;
  m_changed.notify_all();
}

bool StopSign::WaitUntil(std::chrono::steady_clock::time_point when) {
  std::unique_lock lock(m_mutex);
  return m_changed.wait_until(lock, when, [this] { return m_asked; });
}

Pace::Pace(StopSign& stop, double perSecond)
    : m_stop(stop),
      m_secondsPerTrace(perSecond > 0 ? std::min(1 / perSecond, kLongestPauseSeconds) : 0) {}

void Pace::Wait(int traces) {
  if (m_stopped) return;
  const Clock::time_point now = Clock::now();
  m_due += std::chrono::duration_cast<Clock::duration>(
      std::chrono::duration<double>(m_secondsPerTrace * traces));
  m_due = std::max(m_due, now - kCatchUp);
  const bool sleeps = m_due - now >= kShortestSleep;
  if (!sleeps && ++m_unlooked < kTracesPerLook) return;
  m_unlooked = 0;
  m_stopped = m_stop.WaitUntil(sleeps ? m_due : now);
}
