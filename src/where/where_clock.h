// The times of traces as the texts of filters mean them.
//
// Shape    A stamp is the date of a record and below it the time of day, packed as they are. Stamps
//          of real moments have the order of the moments; one that is none stands where its fields
//          put it. Moments are nanoseconds since 1970, UTC.
// Errors   A moment that 64 bits cannot hold becomes the nearest one that they can.
// Threads  Any.
#pragma once

#include <cstdint>
#include <optional>

#include "records/raw_trace.h"
#include "where/text/where_expr.h"

using WhereStamp = std::uint64_t;
constexpr WhereStamp kLastStamp = ~WhereStamp{0};

inline WhereStamp StampOf(const RawTrace& trace) {
  return std::uint64_t{trace.Date()} << 32 | trace.Time();
}
// Nothing if the fields hold no date or no time of day.
std::optional<std::int64_t> MomentOfStamp(WhereStamp stamp);
// The stamp of the first millisecond at or after the moment.
WhereStamp StampFrom(std::int64_t moment);
// That of the first millisecond after it.
WhereStamp StampAfter(std::int64_t moment);

// What a text needs to know of the traces that it is asked about.
struct WhereClock {
  bool utc = false;  // times are shown in UTC, else in the local zone
  std::optional<std::int64_t> end =
      {};  // the moment of the newest trace; none: "end" has no moment
};
// Nothing: it is relative to an end that there is not.
std::optional<std::int64_t> MomentOf(const WhereMoment& said, const WhereClock& clock);
// The end of what was said: of a date the next midnight.
std::optional<std::int64_t> MomentBehind(const WhereMoment& said, const WhereClock& clock);
