#include "overview/time_slices.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <deque>
#include <random>

#include "overview/slow_slices.h"

namespace {

TEST(SliceWidth, EachIsAMultipleOfTheOneBeforeAndAtMostFiveTimesAsWide) {
  for (std::int64_t width = 1; width < std::int64_t{1} << 50;) {
    const std::int64_t wider = WiderSlice(width);
    EXPECT_GT(wider, width);
    EXPECT_EQ(wider % width, 0) << wider;
    EXPECT_LE(wider / width, 5) << wider;
    width = wider;
  }
  EXPECT_EQ(WiderSlice(200), 1000);
  EXPECT_EQ(WiderSlice(43'200'000), 86'400'000);
  EXPECT_EQ(WiderSlice(86'400'000), 172'800'000);
}

TEST(TraceTimes, TheEndOfAWideSliceBeyondAllTimesIsTheLastOne) {
  constexpr std::int64_t kLast = std::numeric_limits<std::int64_t>::max() / 1'000'000;
  EXPECT_EQ(MomentOfMs(kLast), kLast * 1'000'000);
  EXPECT_EQ(MomentOfMs(kLast + 1), kLast * 1'000'000);
  EXPECT_EQ(MomentOfMs(std::int64_t{1} << 50), kLast * 1'000'000);
  EXPECT_EQ(MomentOfMs(-(std::int64_t{1} << 50)), -kLast * 1'000'000);
}

TEST(TraceTimes, AreMillisecondsSince1970) {
  TraceTimes times;
  EXPECT_EQ(times.Of(PackDate(1970, 1, 1), PackTime(0, 0, 0, 0)), 0);
  EXPECT_EQ(times.Of(PackDate(1970, 1, 2), PackTime(1, 2, 3, 4)), 90'123'004);
  EXPECT_EQ(times.Of(PackDate(1969, 12, 31), PackTime(23, 59, 59, 999)), -1);
  // One that a text of a filter finds at the same moment.
  const std::uint32_t date = PackDate(2026, 11, 21), time = PackTime(9, 41, 7, 123);
  EXPECT_EQ(times.Of(date, time) * 1'000'000, MomentOfStamp(std::uint64_t{date} << 32 | time));
}

TEST(TraceTimes, WhatIsNoTimeOfACalendarIsNone) {
  TraceTimes times;
  const std::uint32_t day = PackDate(2026, 11, 21), noon = PackTime(12, 0, 0, 0);
  EXPECT_EQ(times.Of(0, 0), TraceTimes::kNone);
  EXPECT_EQ(times.Of(PackDate(2026, 13, 1), noon), TraceTimes::kNone);
  EXPECT_EQ(times.Of(PackDate(2026, 2, 29), noon), TraceTimes::kNone);
  EXPECT_EQ(times.Of(0xFFFFFFFF, noon), TraceTimes::kNone);
  for (const std::uint32_t time : {PackTime(24, 0, 0, 0), PackTime(0, 60, 0, 0),
                                   PackTime(0, 0, 60, 0), PackTime(0, 0, 0, 1000), 0xFFFFFFFF})
    EXPECT_EQ(times.Of(day, time), TraceTimes::kNone);
  EXPECT_NE(times.Of(day, noon), TraceTimes::kNone);
}

TEST(TimeSlices, NoTracesHaveNoSlices) {
  EXPECT_EQ(TimeSlices().Size(), 0U);
}

TEST(TimeSlices, OneTimeIsOneSliceOfAMillisecond) {
  TimeSlices slices;
  for (int i = 0; i < 3; ++i) slices.Add({kNine, 2, false});
  EXPECT_EQ(slices.Size(), 1U);
  EXPECT_EQ(slices.Width(), 1);
  EXPECT_EQ(slices[0].severities[2], 3U);
}

TEST(TimeSlices, ASliceThatWasGivenUpCountsAgain) {
  TimeSlices slices;
  slices.Add({kNine, 1, false});
  slices.Remove({kNine, 1, false});
  EXPECT_EQ(slices.Size(), 0U);
  slices.Add({kNine, 1, false});
  EXPECT_EQ(slices.Size(), 1U);
}

TEST(TimeSlices, ASliceThatTheLimitsCutHasNothingFromOutside) {
  TimeSlices slices(TimeLimits{kNine + 300, kNine + 900'700});
  std::vector<SlicedTrace> traces;
  for (const std::int64_t time :
       {450'000, 300, 400, 299, 301, 1, 900'699, 900'700, 900'698, 900'999, 900'000})
    traces.push_back({kNine + time, 0, false});
  for (const std::int64_t time : {300, 900'699}) traces.push_back({kNine + time, 0, false});
  for (const SlicedTrace& trace : traces) slices.Add(trace);
  EXPECT_EQ(slices.Width(), 1000);
  ExpectCountsOf(traces, slices);
}

TEST(TimeSlices, TheLastThatFitsJoinsNothingAndTheNextJoinsPairs) {
  TimeSlices slices;
  slices.Add({kNine, 0, false});
  slices.Add({kNine + 2047, 1, false});
  EXPECT_EQ(slices.Width(), 1);
  EXPECT_EQ(slices.Size(), 2048U);
  slices.Add({kNine + 2048, 1, true});
  EXPECT_EQ(slices.Width(), 2);
  EXPECT_EQ(slices.Size(), 1025U);
  EXPECT_EQ(slices[1024].losses, 1U);
}

TEST(TimeSlices, TimesThatLeaveMakeRoomForThoseThatCome) {
  TimeSlices slices;
  // A monitor that holds two seconds, for an hour.
  for (std::int64_t ms = 0; ms < 3'600'000; ++ms) {
    slices.Add({kNine + ms, 3, false});
    if (ms >= 2000) slices.Remove({kNine + ms - 2000, 3, false});
  }
  EXPECT_EQ(slices.Width(), 1);
  EXPECT_EQ(slices.Size(), 2000U);
}

// Times that rise, stand still, step back, are long ago, are in the far future, or are none.
class RandomTimes {
 public:
  explicit RandomTimes(unsigned seed)
      : m_random(seed), m_step(std::int64_t{1} << Below(24)), m_wild(Below(3) == 0) {}

  SlicedTrace Next() {
    const std::int64_t step = static_cast<std::int64_t>(m_random() % m_step);
    if (Below(8) == 0)
      m_now -= step;
    else if (Below(4) != 0)
      m_now += step;
    std::int64_t time = m_now;
    if (m_wild && Below(40) == 0)
      time = static_cast<std::int64_t>(m_random() % 18'000'000'000'000) - 9'000'000'000'000;
    if (Below(50) == 0) time = TraceTimes::kNone;
    return {time, Below(4), Below(30) == 0};
  }
  unsigned Below(unsigned end) { return static_cast<unsigned>(m_random() % end); }

 private:
  std::mt19937_64 m_random;
  const std::uint64_t m_step;
  const bool m_wild;
  std::int64_t m_now = kNine;
};

TimeLimits RandomLimits(RandomTimes& random) {
  if (random.Below(2) == 0) return {};
  const std::int64_t from = kNine + random.Below(100'000);
  return {from, from + 1 + random.Below(1'000'000)};
}

TEST(TimeSlices, AreASlowCountWhateverComesLeavesOrIsCleared) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE(seed);
    RandomTimes random(seed);
    TimeSlices slices(RandomLimits(random));
    std::deque<SlicedTrace> held;
    const std::size_t most = 1 + random.Below(400);
    for (unsigned step = 0; step < 1000; ++step) {
      held.push_back(random.Next());
      slices.Add(held.back());
      for (; held.size() > most; held.pop_front()) slices.Remove(held.front());
      if (random.Below(300) == 0) {
        held.clear();
        slices = TimeSlices(slices.Limits());
      }
      if (random.Below(100) == 0) slices.Size();  // it drops what is empty at its ends
      if (random.Below(100) == 0 && slices.Limits() == TimeLimits()) slices.RelaxLimits();
    }
    ExpectCountsOf({held.begin(), held.end()}, slices);
    if (HasFailure()) return;
  }
}

TEST(TimeSlices, PartsJoinedInAnyOrderAreTheCountOfAllTogether) {
  for (unsigned seed = 0; seed < 1000; ++seed) {
    SCOPED_TRACE(seed);
    RandomTimes random(seed);
    const TimeLimits limits = RandomLimits(random);
    std::vector<TimeSlices> parts(1 + random.Below(6), TimeSlices(limits));
    std::vector<SlicedTrace> all;
    for (unsigned i = 0; i < 500; ++i) {
      all.push_back(random.Next());
      parts[random.Below(static_cast<unsigned>(parts.size()))].Add(all.back());
    }
    TimeSlices joined(limits);
    // A part that was used before keeps its width.
    if (random.Below(2) == 0) {
      joined.Join(parts.front());
      joined.Empty();
    }
    for (const TimeSlices& part : parts) joined.Join(part);
    ExpectCountsOf(all, joined);
    std::int64_t first = std::numeric_limits<std::int64_t>::max(), last = TraceTimes::kNone;
    for (const SlicedTrace& trace : all) {
      if (trace.time == TraceTimes::kNone || !limits.Has(trace.time)) continue;
      first = std::min(first, trace.time);
      last = std::max(last, trace.time);
    }
    if (first <= last) {
      EXPECT_EQ(joined.Width(), SlowWidth(first, last));
    }
    if (HasFailure()) return;
  }
}

TEST(TimeSlices, LimitsRelaxUpToTheNearestTimeOutside) {
  TimeSlices slices(TimeLimits{kNine, kNine + 10});
  std::vector<SlicedTrace> traces = {{kNine - 5000, 0, false},
                                     {kNine - 700, 0, false},
                                     {kNine + 1, 0, false},
                                     {kNine + 90'000, 0, false},
                                     {kNine + 80'000, 0, false}};
  for (const SlicedTrace& trace : traces) slices.Add(trace);
  slices.RelaxLimits();
  EXPECT_EQ(slices.Limits(), (TimeLimits{kNine - 699, kNine + 80'000}));
  for (const std::int64_t time : {kNine - 699, kNine - 700, kNine + 79'999, kNine + 80'000}) {
    traces.push_back({time, 1, false});
    slices.Add(traces.back());
  }
  ExpectCountsOf(traces, slices);
}

TEST(TimeSlices, WideningToANumberKeepsEachTrace) {
  RandomTimes random(7);
  TimeSlices slices;
  std::vector<SlicedTrace> traces;
  for (int i = 0; i < 5000; ++i) {
    traces.push_back(random.Next());
    slices.Add(traces.back());
  }
  for (const std::size_t most : {1000, 60, 7, 2}) {
    slices.WidenTo(most);
    EXPECT_LE(slices.Size(), most);
    ExpectCountsOf(traces, slices);
  }
}

}  // namespace
