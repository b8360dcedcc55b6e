// The speed of one worker, and when it ends.
//
// Threads  A Pace belongs to one worker. Stop may be asked for from any thread.
#pragma once

#include <chrono>
#include <condition_variable>
#include <mutex>

class StopSign {
 public:
  void Ask();
  // Waits until then, or until a stop is requested. True: the worker must end.
  bool WaitUntil(std::chrono::steady_clock::time_point when);

 private:
  std::mutex m_mutex;
  std::condition_variable m_changed;
  bool m_asked = false;
};

class Pace {
 public:
  // `perSecond` 0: no pause.
  Pace(StopSign& stop, double perSecond);
  // Waits until so many traces are due. A late worker catches up at most a quarter of a second.
  void Wait(int traces = 1);
  bool Stopped() const { return m_stopped; }

 private:
  using Clock = std::chrono::steady_clock;
  StopSign& m_stop;
  const double m_secondsPerTrace;
  Clock::time_point m_due = Clock::now();
  unsigned m_unlooked = 0;  // traces since the stop sign was last checked
  bool m_stopped = false;
};
