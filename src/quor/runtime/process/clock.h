// The time of a trace: UTC date and time of day, and a monotonic count of picoseconds.
//
// Shape    Date and time as packed in a record; the count is CLOCK_MONOTONIC in picoseconds.
//          If the kernel itself keeps time by the processor's time stamp counter, the clock reads
//          that counter, and a linear function ("the line") maps it to the kernel's clocks. The
//          line is computed again every few milliseconds and never runs backwards. That saves half
//          of the cost of a trace. Otherwise, and while the line is being computed, the kernel's
//          clock is read; it agrees with the line to tens of nanoseconds.
// Errors   None.
// Threads  Any, also in a signal handler: a thread that meets the line while it is being computed
//          asks the kernel.
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
  // Finds out whether the counter can be used. Call it once, before the first Now.
  void Begin();
  Stamp Now() noexcept;
  // In the child of a fork: another thread of the parent may have been computing the line.
  void AfterFork() noexcept;
  // The same with the kernel's clocks only.
  static Stamp ByKernel() noexcept;

 private:
  static constexpr std::uint64_t kLineNs = 5'000'000;  // how long a line is used
  struct Sample {
    std::uint64_t ticks, monotonicNs, wallNs;
  };
  Stamp Redraw() noexcept;
  void Draw(const Sample& now, std::uint64_t ticks) noexcept;
  static Sample Measure() noexcept;

  // The line, under a sequence lock: odd while it is being computed.
  alignas(64) std::atomic<std::uint32_t> m_sequence{0};
  std::atomic<std::uint32_t> m_date{0}, m_secondOfDayTime{0};
  std::atomic<std::uint64_t> m_startTicks{0}, m_lengthTicks{0};
  std::atomic<std::uint64_t> m_startPs{0};
  std::atomic<std::uint64_t> m_psPerTick{0};  // fixed point, 32 fractional bits
  std::atomic<std::uint64_t> m_secondPs{0};   // the count at which this second began
  // Only used while the line is computed.
  Sample m_first{}, m_recent{};  // the base of the rate, and the next one
  bool m_usesCounter = false;
};
