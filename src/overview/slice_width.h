// The widths that slices of time can have: round ones, each a multiple of the one before.
//
// Shape    Milliseconds: 1, 2, 10, 20, 100, 200, a second, 2 s, 10 s, 30 s, a minute, 2, 10 and 30
//          minutes, an hour, 2, 6 and 12 hours, a day, and from there on twice the one before. A
//          slice begins at a multiple of its width since 1970, UTC. So slices of one width are
//          joined to those of the next without a rest.
// Threads  Pure.
#pragma once

#include <cstdint>

// REQUIRES: the width is one of them and less than 2^61.
std::int64_t WiderSlice(std::int64_t width);

inline std::int64_t FloorDivided(std::int64_t number, std::int64_t by) {
  return number / by - (number % by < 0 ? 1 : 0);
}
