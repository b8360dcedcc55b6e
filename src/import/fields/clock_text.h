// The forms in which logs write a date and a time of day.
//
// Errors   0 characters: the text does not begin with such a time. Out of range (a 13th month, a
//          25th hour) is none.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct ClockTime {
  int year = 0;  // 0: not said
  int month = 1, day = 1, hour = 0, minute = 0, second = 0, ms = 0;
  std::optional<int> offset;  // seconds east of Greenwich

  // Seconds since 1970 of this clock, as if it were in UTC. REQUIRES: a year.
  std::int64_t Seconds() const;
};

// Each gives the characters that it has read from the beginning of the text.

// "2026-11-21T09:41:07.123456+01:00": "/" for "-", a blank for "T", a comma for the point, without
// fraction, seconds or zone, "Z" or " UTC" as the zone. More than milliseconds is left out.
std::size_t ReadIsoTime(std::string_view text, ClockTime& time);
// "Nov 21 09:41:07" and "Nov  1 09:41:07", with a fraction, and with a year before the time of day.
std::size_t ReadSyslogTime(std::string_view text, ClockTime& time);
// "21/Nov/2026:09:41:07 +0100", as web servers have it.
std::size_t ReadWebTime(std::string_view text, ClockTime& time);

// Seconds, milliseconds, microseconds or nanoseconds since 1970, by the number of digits, with or
// without a fraction, as milliseconds. Nothing if the text is anything else.
std::optional<std::int64_t> ReadEpoch(std::string_view text);

// By strptime, and once "%f" for the digits of a fraction of a second. The whole text must match. A
// NUL ends both.
bool ReadFormattedTime(std::string text, std::string format, ClockTime& time);
