// What local time is ahead of UTC, by the zone's rules at that moment and not at this one.
//
// Threads  Any.
#pragma once

#include <cstdint>

// Seconds, positive east of Greenwich, at a moment given in seconds since 1970.
int ZoneOffsetSeconds(std::int64_t utcSeconds);

// Reads the zone anew (TZ may have changed) and forgets what was remembered of the old one.
void ForgetZone();
