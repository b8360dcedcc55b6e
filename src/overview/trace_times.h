// The times of traces as the overview has them: milliseconds since 1970, UTC.
//
// Shape    A trace whose fields hold no date or no time of day has no time, and so has one outside
//          of the years 1678 to 2261.
// Threads  One at a time: the last date is remembered.
#pragma once

#include <cstdint>
#include <limits>

#include "where/where_clock.h"

class TraceTimes {
 public:
  static constexpr std::int64_t kNone = std::numeric_limits<std::int64_t>::min();

  std::int64_t Of(std::uint32_t date, std::uint32_t time) {
    if (date != m_date) Learn(date);
    const UnpackedTime part = UnpackTime(time);
    if (part.hour > 23 || part.minute > 59 || part.second > 59 || part.ms > 999 || !m_isDate)
      return kNone;
    return m_midnight + ((part.hour * 60 + part.minute) * 60 + part.second) * 1000 + part.ms;
  }

 private:
  void Learn(std::uint32_t date) {
    m_date = date;
    const auto midnight = MomentOfStamp(std::uint64_t{date} << 32);
    m_isDate = midnight.has_value();
    m_midnight = midnight.value_or(0) / 1'000'000;
  }

  std::uint32_t m_date = 0;  // which is none
  bool m_isDate = false;
  std::int64_t m_midnight = 0;
};
