// The tic counts of one process, in picoseconds, from times in nanoseconds since 1970.
//
// Shape    They count from a day before the first time. 64 bits hold 213 days of picoseconds, so a
//          time before or behind these has none (0), unless the one before it had none either and
//          lies within a day of it: then they count anew from there.
// Threads  One.
#pragma once

#include <cstdint>
#include <optional>

class OtlpTics {
 public:
  std::uint64_t Of(std::uint64_t unixNs) {
    if (!m_base) Begin(unixNs);
    const bool isOutside = unixNs <= *m_base || unixNs - *m_base > kLongestNs;
    if (isOutside && m_outside && IsNear(*m_outside, unixNs)) {
      Begin(unixNs);
    } else if (isOutside) {
      m_outside = unixNs;
      return 0;
    }
    m_outside.reset();
    return (unixNs - *m_base) * 1000;
  }

 private:
  static constexpr std::uint64_t kDayNs = 86'400'000'000'000, kLongestNs = UINT64_MAX / 1000;

  static bool IsNear(std::uint64_t a, std::uint64_t b) { return (a < b ? b - a : a - b) <= kDayNs; }
  void Begin(std::uint64_t unixNs) { m_base = unixNs > kDayNs ? unixNs - kDayNs : 0; }

  std::optional<std::uint64_t> m_base, m_outside;
};
