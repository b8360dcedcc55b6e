// A line on standard error with the progress of long work; silent unless that is a terminal. It
// appears after a tenth of a second, changes ten times a second, and is erased at the end.
//
// Threads  One at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

// How many traces are processed between two looks at the clock.
constexpr std::uint64_t kTracesPerLook = 4096;

class ProgressLine {
 public:
  ProgressLine();
  ~ProgressLine() { Clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // "caption 42 %"; without a total only the caption, immediately.
  void Show(std::string_view caption, std::uint64_t done = 0, std::uint64_t total = 0);
  void Clear();
  // No output from now on, because the terminal will get the results.
  void Silence() {
    Clear();
    m_terminal = false;
  }

 private:
  using Clock = std::chrono::steady_clock;
  static constexpr std::chrono::milliseconds kPeriod{100};
  bool m_terminal;
  bool m_shown = false;
  Clock::time_point m_next;
};
