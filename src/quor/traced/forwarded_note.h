// A note in a segment: the machine that its traces go to, and how many have arrived there. It
// outlives this service.
//
// Shape    In the first page, which stays when the rest of the file is cut off.
// Owner    The function of a note holds a mapping of that page.
// Errors   Nothing in the page is trusted: it may be cut off or written to at any time. Without
//          memory for the mapping there is no note.
// Threads  One.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "quor/ring/segment_map.h"

std::string ForwardTarget(const SegmentHeader& header);
void SetForwardTarget(SegmentHeader& header, const std::string& machine);

// A function that writes `before` plus its argument. `file`: of the segment; stays the caller's.
std::function<void(std::uint64_t)> ForwardedNote(int file, std::uint64_t before);

// How many of `served` arrived there, without those that went elsewhere before.
std::uint64_t ForwardedOf(std::uint64_t forwarded, std::uint64_t served, std::uint64_t elsewhere);
