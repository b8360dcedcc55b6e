// What a user writes to go to a time or to a row.
//
// Shape    A time: "2026-11-21 09:41:07.123" and what else a filter text takes as a time, with
//          "end - 5m"; "09:41:07", of the day of the row with the focus; "+5s" and "-1m", from that
//          row. A row: "4711" as rows count from 1, "50%", "-1" for the last.
// Errors   Nothing, and a reason for the user.
// Threads  Pure, but for the zone of this machine.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "where/where_clock.h"

// Moments as WhereClock has them.
struct GoToClock {
  WhereClock where;
  std::optional<std::int64_t> focused;  // of the row with the focus; none: no row has it
  std::optional<std::int64_t> day;      // on whose date a time of day is
};

std::optional<std::int64_t> ReadGoToTime(std::string_view text, const GoToClock& clock,
                                         std::string* why);
// A number from 0.
std::optional<int> ReadGoToRow(std::string_view text, int rows, std::string* why);
