// The options --since and --until: a moment as a user writes it.
//
// Shape    "2026-11-23T09:41:07.123+01:00", also with a blank for the "T", without fraction,
//          seconds, zone or time of day; "10m ago" with ms, s, m, h, d or w; "now".
// Errors   Nothing for any other text, and outside of the years 1 to 9999.
// Threads  Pure, but for the zone of this machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string_view>

// As MomentKey makes it. `utc`: of a time without a zone; otherwise it is this machine's. `nowMs`
// is in milliseconds since 1970.
std::optional<std::uint64_t> ReadMoment(std::string_view text, bool utc, std::int64_t nowMs);
// The milliseconds since 1970 of a moment with a valid date.
std::int64_t MillisecondsOf(std::uint64_t momentKey);
std::int64_t NowMs();
