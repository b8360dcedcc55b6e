// The counts of slices, said slowly: every trace is looked at for every slice.
#pragma once

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "overview/slice_width.h"
#include "overview/time_slices.h"

constexpr std::int64_t kNine = 1'795'000'000'000;  // a morning in November 2026

// Does each slice have exactly the traces whose times are in it, and nothing else any trace?
inline void ExpectCountsOf(const std::vector<SlicedTrace>& traces, const TimeSlices& slices) {
  std::map<std::int64_t, SliceCounts> counts;  // by the beginning of a slice
  std::uint64_t before = 0, behind = 0, withoutTime = 0;
  for (const SlicedTrace& trace : traces) {
    if (trace.time == TraceTimes::kNone) {
      ++withoutTime;
    } else if (trace.time < slices.Limits().from) {
      ++before;
    } else if (trace.time >= slices.Limits().to) {
      ++behind;
    } else {
      std::int64_t begin = trace.time / slices.Width() * slices.Width();
      if (begin > trace.time) begin -= slices.Width();
      SliceCounts& slice = counts[begin];
      ++slice.severities[trace.severity];
      slice.losses += trace.isLoss ? 1 : 0;
    }
  }
  EXPECT_EQ(slices.Before(), before);
  EXPECT_EQ(slices.Behind(), behind);
  EXPECT_EQ(slices.WithoutTime(), withoutTime);
  ASSERT_EQ(slices.Size() == 0, counts.empty());
  if (counts.empty()) return;
  ASSERT_LE(slices.Size(), TimeSlices::kSlices);
  EXPECT_EQ(slices.From(), counts.begin()->first);
  EXPECT_EQ(slices.To(), counts.rbegin()->first + slices.Width());
  for (std::size_t i = 0; i < slices.Size(); ++i) {
    const std::int64_t begin = slices.From() + static_cast<std::int64_t>(i) * slices.Width();
    const auto found = counts.find(begin);
    ASSERT_EQ(slices[i], found == counts.end() ? SliceCounts() : found->second) << begin;
  }
}

// The narrowest width with which all times fit.
inline std::int64_t SlowWidth(std::int64_t first, std::int64_t last) {
  std::int64_t width = 1;
  const auto index = [&](std::int64_t time) { return time / width - (time % width < 0 ? 1 : 0); };
  while (index(last) - index(first) >= static_cast<std::int64_t>(TimeSlices::kSlices))
    width = WiderSlice(width);
  return width;
}
