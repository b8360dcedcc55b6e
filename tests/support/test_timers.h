// Timers that tick when the test says so. Threads: the interface thread.
#pragma once

#include <functional>
#include <map>
#include <utility>
#include <vector>

#include "docview/host.h"

class TestTimers {
 public:
  // Every open timer ticks once.
  void TickTimers() {
    const auto timers = m_timers;
    for (const auto& [id, timer] : timers) {
      if (m_timers.count(id)) timer.second();
    }
  }
  // The periods of the open timers, ms.
  std::vector<unsigned> Timers() const {
    std::vector<unsigned> periods;
    for (const auto& entry : m_timers) periods.push_back(entry.second.first);
    return periods;
  }

 protected:
  TimerId Add(unsigned milliseconds, std::function<void()> tick) {
    m_timers[++m_lastTimer] = {milliseconds, std::move(tick)};
    return m_lastTimer;
  }
  void Remove(TimerId timer) { m_timers.erase(timer); }
  TimerId Last() const { return m_lastTimer; }
  std::function<void()> TickOf(TimerId timer) const { return m_timers.at(timer).second; }

 private:
  std::map<TimerId, std::pair<unsigned, std::function<void()>>> m_timers;
  TimerId m_lastTimer = 0;
};
