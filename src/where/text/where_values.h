// Numbers, time spans and moments of a filter text: read, and written as they are read.
//
// Errors   Nothing, and a reason.
// Threads  Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "where/text/where_expr.h"

// "4711" and "0x1F". Nothing for another text and for more than 64 bits.
std::optional<std::uint64_t> ReadWhereNumber(std::string_view word);

struct WhereRange {
  std::uint64_t from = 0, to = 0;
};
// "10..20". Nothing unless there is a number on both sides; `to` may be below `from`.
std::optional<WhereRange> ReadWhereRange(std::string_view word);

// "50ms", "1.5s", "-2h", as nanoseconds: units ns us ms s m h d.
std::optional<std::int64_t> ReadWhereDuration(std::string_view word, std::string* why = nullptr);
// In the largest unit that gives a whole number.
std::string DurationText(std::int64_t nanoseconds);

// "2026-11-21", "2026-11-21T09:41", "2026-11-21T09:41:07.123+01:00"; a blank for the "T". Of the
// years 1678 to 2261, whose nanoseconds fit.
std::optional<WhereMoment> ReadWhereMoment(std::string_view text, std::string* why = nullptr);
// "2026-11-21T09:41:07Z", "end - 5m".
std::string MomentText(const WhereMoment& moment);
