// The zone in which times are shown, as the status bar has it.
//
// Threads  Any.
#pragma once

#include <optional>
#include <string>

#include "records/trace_list.h"

// "UTC", "UTC+01:00", or "UTC+01:00/+02:00" where the clocks changed between the first and the last
// of the traces. Without a trace with a date: the zone of the present.
std::string ZoneText(const TraceList_t& traces, bool utc);
