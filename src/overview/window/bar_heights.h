// How high the parts of a bar are: traces without a severity at the bottom, errors at the top.
//
// Threads  Pure.
#pragma once

#include <array>

#include "overview/time_slices.h"

// From the bottom: none, info, warn, error.
constexpr std::array<std::size_t, SliceCounts::kSeverities> kBarOrder = {3, 0, 1, 2};

// Pixels of each part, in kBarOrder; all together at most `roomPx`, of the bar with `highest`
// traces exactly that. What there is can be seen: an error has three pixels and a warning two, as
// far as there is room.
std::array<int, SliceCounts::kSeverities> HeightsOf(const SliceCounts& counts,
                                                    std::uint64_t highest, int roomPx);
