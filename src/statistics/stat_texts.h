// The counts as texts.
//
// Threads  Touches only its arguments, and the zone of this machine.
#pragma once

#include <string>

#include "statistics/stat_rows.h"

// "12.3 %".
std::string ShareText(double share);
// "424.89"; empty: none.
std::string RateText(const std::optional<double>& rate);
// As the list shows the time of a trace.
std::string StampText(WhereStamp stamp, bool utc);
// A cell of a list; counts in groups of digits.
std::string StatText(const StatRow& row, StatColumn column, bool utc);
