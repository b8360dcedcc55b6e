// The slices of time as bars of some pixels, and the times that are written below them.
//
// Shape    Pixels are device-independent, from the left edge of the strip.
// Threads  Pure; labels in local time read the zone.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "overview/time_slices.h"

// Which time stands where. REQUIRES: to > from.
struct OverviewScale {
  std::int64_t from = 0, to = 1;  // milliseconds
  int widthPx = 0;

  // Also of times outside.
  int PxOf(std::int64_t time) const;
  // Of the left edge of a pixel, in [from, to].
  std::int64_t TimeAt(int px) const;
};

struct OverviewBar {
  int fromPx, toPx;
  TimeLimits time;
  SliceCounts counts;
};

// At least so wide, each a whole number of slices; without those that have no traces, and without
// what lies outside of the scale.
std::vector<OverviewBar> BarsOf(const TimeSlices& slices, const OverviewScale& scale, int leastPx);
// The time that the bar at this place has, whether it has traces or not.
TimeLimits BarTimeAt(const TimeSlices& slices, const OverviewScale& scale, int leastPx,
                     std::int64_t time);

struct OverviewLabel {
  int px;  // of its left edge
  std::string text;
  bool isEnd;  // of the strip, else it stands below its time
};
// Of what lies beyond the ends; behind the time of the left one, before that of the right one.
struct OverviewEndNotes {
  std::string first, last;
};
// Date and time at the left end, a time at the right end, and round times between them where they
// have room, in this order. Notes are left out where there is no room for both ends with them.
std::vector<OverviewLabel> LabelsOf(const OverviewScale& scale, bool utc,
                                    const std::function<int(const std::string&)>& widthPx,
                                    const OverviewEndNotes& notes = {});
