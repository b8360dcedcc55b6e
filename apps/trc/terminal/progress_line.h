// One line on standard error that tells how far long work has come; silent unless that is a
// terminal. It comes after a tenth of a second, changes ten times a second, and leaves no trace.
//
// Threads  One at a time.
#pragma once

#include <chrono>
#include <cstdint>
#include <string_view>

// How many traces pass between two looks at the clock.
constexpr std::uint64_t kTracesPerLook = 4096;

class ProgressLine {
 public:
  ProgressLine();
  ~ProgressLine() { Clear(); }
  ProgressLine(const ProgressLine&) = delete;
  ProgressLine& operator=(const ProgressLine&) = delete;

  // "caption 42 %"; without a total the caption alone, at once.
  void Show(std::string_view caption, std::uint64_t done = 0, std::uint64_t total = 0);
  void Clear();
  // From now on nothing: the terminal is about to get the results.
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
