// The difference of local time to UTC, by the zone's rules at the given moment, not at the present.
//
// Threads  Any.
#pragma once

#include <cstdint>

// Seconds, positive east of Greenwich, at a moment given in seconds since 1970.
int ZoneOffsetSeconds(std::int64_t utcSeconds);

// Reads the zone again (TZ may have changed) and clears the cache.
void ForgetZone();
