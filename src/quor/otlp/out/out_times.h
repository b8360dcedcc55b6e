// Nanoseconds since 1970 from the milliseconds and the tic counts of traces.
//
// Shape    A trace has its time in milliseconds, and a tic count since a moment of its process. An
//          OutClock learns that moment from the traces of one source: each one puts it into one
//          millisecond. The time that it gives is always in the trace's own millisecond.
// Threads  Plain values.
#pragma once

#include <cstdint>
#include <optional>

constexpr std::uint64_t kPsPerNs = 1000;

// Nothing: the fields hold no time between 1970 and 2262.
std::optional<std::uint64_t> UnixNanoOf(std::uint32_t date, std::uint32_t time);

class OutClock {
 public:
  OutClock() = default;
  explicit OutClock(std::int64_t moment) : m_moment(moment), m_knows(true) {}

  // `ms`: the time of the trace.
  std::uint64_t TimeOf(std::uint64_t ms, std::uint64_t tic);
  bool Knows() const { return m_knows; }
  std::int64_t Moment() const { return m_moment; }  // of tic 0

 private:
  std::int64_t m_moment = 0;
  bool m_knows = false;
};
