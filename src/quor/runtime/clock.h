// The time of a trace: UTC date and time of day, and a monotonic count of picoseconds.
//
// Shape    Date and time as packed in a record; the count is CLOCK_MONOTONIC in picoseconds.
//          Where the kernel itself keeps time by the processor's time stamp counter, the counter is
//          read directly and laid on a line through the kernel's clocks, which is drawn anew every
//          few milliseconds and never runs backwards; that saves half of the cost of a trace.
//          Elsewhere, and while it is being drawn, the kernel's clock is asked, which agrees with
//          the line to tens of nanoseconds.
// Errors   None.
// Threads  Any, also in a signal handler: who meets the line while it is being drawn asks the
//          kernel.
#pragma once

#include <atomic>
#include <cstdint>

constexpr std::uint64_t kSecondNs = 1'000'000'000;

struct Stamp {
  std::uint32_t date, time;
  std::uint64_t ticPs;
};

class TraceClock {
 public:
  // Finds out whether the counter can be used. Once, before the first Now.
  void Begin();
  Stamp Now() noexcept;
  // In the child of a fork: another thread of the parent may have been drawing the line.
  void AfterFork() noexcept;
  // The same by the kernel's clocks alone.
  static Stamp ByKernel() noexcept;
  bool UsesCounter() const { return m_usesCounter; }

 private:
  static constexpr std::uint64_t kLineNs = 5'000'000;  // how long a line is used
  struct Sample {
    std::uint64_t ticks, monotonicNs, wallNs;
  };
  Stamp Redraw() noexcept;
  void Draw(const Sample& now, std::uint64_t ticks) noexcept;
  static Sample Measure() noexcept;

  // The line, under a sequence lock: odd while it is being drawn.
  alignas(64) std::atomic<std::uint32_t> m_sequence{0};
  std::atomic<std::uint32_t> m_date{0}, m_secondOfDayTime{0};
  std::atomic<std::uint64_t> m_startTicks{0}, m_lengthTicks{0};
  std::atomic<std::uint64_t> m_startPs{0};
  std::atomic<std::uint64_t> m_psPerTick{0};  // 32 bits behind the point
  std::atomic<std::uint64_t> m_secondPs{0};   // the count at which this second began
  // Only touched while drawing.
  Sample m_first{}, m_recent{};  // the base of the rate, and the next one
  bool m_usesCounter = false;
};
