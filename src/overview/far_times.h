// Times that lie far from all others, as those of a clock that was not set yet: they must not
// flatten the rest.
//
// Shape    Far are at most one trace in 256, but of 16 traces and more one may be, that lie behind
//          an empty time of an hour or more which is at least 16 times as long as that of the
//          others. They are counted before or behind the slices.
// Threads  Pure.
#pragma once

#include <optional>

#include "overview/time_slices.h"

// Do the slices take a small part of their number, with the width of a time that was longer?
bool CouldBeNarrower(const TimeSlices& slices);
// The limits with which the same traces should be counted anew: because a few are far, because too
// many are outside of the limits now, or because the slices could be much narrower. Nothing: the
// slices are good. Counting anew with what this says comes to an end after a few times.
std::optional<TimeLimits> BetterLimits(const TimeSlices& slices);
