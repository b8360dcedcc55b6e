// Measures a task and its floor alternately in one run, and prints the ratio. Machines differ and
// their speed drifts, but a ratio of neighbouring runs is stable.
#pragma once

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <ctime>
#include <functional>
#include <string>
#include <vector>

inline double Seconds(const std::function<void()>& work) {
  const auto start = std::chrono::steady_clock::now();
  work();
  return std::chrono::duration<double>(std::chrono::steady_clock::now() - start).count();
}

// This thread's own processor time, unaffected by other programs.
inline double ThreadSeconds() {
  timespec time;
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + 1e-9 * static_cast<double>(time.tv_nsec);
}

inline double Median(std::vector<double> values) {
  std::sort(values.begin(), values.end());
  return values[values.size() / 2];
}

struct Measured {
  double seconds;       // median
  double floorSeconds;  // median
  double ratio;         // median of the ratios of neighbouring runs
};

// One warm-up of both, then `turns` pairs.
inline Measured MeasureBeside(int turns, const std::function<void()>& floorWork,
                              const std::function<void()>& work) {
  floorWork();
  work();
  std::vector<double> floors, times, ratios;
  for (int i = 0; i < turns; ++i) {
    floors.push_back(Seconds(floorWork));
    times.push_back(Seconds(work));
    ratios.push_back(times.back() / floors.back());
  }
  return {Median(times), Median(floors), Median(ratios)};
}

// The median share of a core that the work takes on this thread, if it is done once every
// `periodSeconds`.
inline double ShareOfCore(int turns, double periodSeconds, const std::function<void()>& work) {
  std::vector<double> busy;
  for (int i = 0; i < turns; ++i) {
    const double start = ThreadSeconds();
    work();
    busy.push_back(ThreadSeconds() - start);
  }
  return Median(busy) / periodSeconds;
}

// A row: name, cost, the floor's cost, the ratio, the target, and whether it is met.
inline void PrintRow(const std::string& what, double value, const char* unit, double floorValue,
                     double ratio, double target) {
  std::printf("%-46s %10.2f %-9s floor %10.2f   ratio %6.2f   target <= %5.2f  %s\n", what.c_str(),
              value, unit, floorValue, ratio, target, ratio <= target ? "met" : "MISSED");
  std::fflush(stdout);
}
