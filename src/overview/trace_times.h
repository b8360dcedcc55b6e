// The times of traces as the overview has them: milliseconds since 1970, UTC.
//
// Shape    A trace whose fields hold no date or no time of day has no time, and so has one outside
//          of the years 1678 to 2261.
// Threads  One at a time: the last second is remembered.
#pragma once

#include <algorithm>
#include <cstdint>
#include <limits>

#include "where/where_clock.h"

// The same in nanoseconds. What 64 bits cannot hold, as the end of a wide slice, becomes the
// nearest time that they can.
inline std::int64_t MomentOfMs(std::int64_t ms) {
  constexpr std::int64_t kPerMs = 1'000'000;
  using Limits = std::numeric_limits<std::int64_t>;
  return std::clamp(ms, Limits::min() / kPerMs, Limits::max() / kPerMs) * kPerMs;
}

class TraceTimes {
 public:
  static constexpr std::int64_t kNone = std::numeric_limits<std::int64_t>::min();

  std::int64_t Of(std::uint32_t date, std::uint32_t time) {
    if (date != m_date || time >> kMsBits != m_second) Learn(date, time >> kMsBits);
    const std::uint32_t ms = time & ((1U << kMsBits) - 1);
    return m_isSecond && ms <= 999 ? m_begin + ms : kNone;
  }

 private:
  static constexpr unsigned kMsBits = 11;

  void Learn(std::uint32_t date, std::uint32_t second) {
    if (date != m_date) LearnDate(date);
    m_second = second;
    const UnpackedTime part = UnpackTime(second << kMsBits);
    m_isSecond = m_isDate && part.hour <= 23 && part.minute <= 59 && part.second <= 59;
    m_begin = m_midnight + std::int64_t{(part.hour * 60 + part.minute) * 60 + part.second} * 1000;
  }
  void LearnDate(std::uint32_t date) {
    m_date = date;
    const auto midnight = MomentOfStamp(std::uint64_t{date} << 32);
    m_isDate = midnight.has_value();
    m_midnight = midnight.value_or(0) / 1'000'000;
  }

  std::uint32_t m_date = 0;      // which is none
  std::uint32_t m_second = ~0U;  // the time of day without its milliseconds
  bool m_isDate = false, m_isSecond = false;
  std::int64_t m_midnight = 0, m_begin = 0;
};
