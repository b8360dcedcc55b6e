// What is counted of the traces that have one value: how many, and between which times.
//
// Threads  Values: pure.
#pragma once

#include <algorithm>
#include <cstdint>
#include <optional>

#include "where/where_clock.h"

struct Tally {
  std::uint64_t count = 0;
  // The earliest and the latest by the traces' own times, in whatever order they came.
  WhereStamp first = kLastStamp, last = 0;

  void Add(WhereStamp stamp) {
    ++count;
    first = std::min(first, stamp);
    last = std::max(last, stamp);
  }
  void Join(const Tally& other) {
    count += other.count;
    first = std::min(first, other.first);
    last = std::max(last, other.last);
  }
  bool operator==(const Tally&) const = default;
};

// How many a second from the first to the last of them: each but the first ends a span. Nothing:
// there is no such span, or a time is no time of a calendar.
std::optional<double> RatePerSecond(const Tally& tally);
