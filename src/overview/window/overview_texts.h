// What the overview says in words: times, and what a part of it has.
//
// Threads  Pure; local times read the zone.
#pragma once

#include <cstdint>
#include <string>

#include "overview/time_slices.h"

struct Milliseconds {
  static constexpr std::int64_t kSecond = 1000, kMinute = 60 * kSecond, kHour = 60 * kMinute,
                                kDay = 24 * kHour;
};

// "09:41", "09:41:07", "09:41:07.120" or "2026-11-21", as exact as a step of milliseconds needs.
std::string TimeLabel(std::int64_t time, std::int64_t step, bool utc);
// "2026-11-21 09:41:07".
std::string DateTimeLabel(std::int64_t time, std::int64_t step, bool utc);
// "12,301 traces from 10:15:02 to 10:15:07, 12 errors, 1 warning". With dates if they differ.
std::string CountsText(const SliceCounts& counts, const TimeLimits& time, bool utc);
// "12,301 traces", "1 trace".
std::string CountText(std::uint64_t count, const char* one, const char* many);
