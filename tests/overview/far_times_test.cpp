#include "overview/far_times.h"

#include <gtest/gtest.h>

#include <random>

#include "overview/slow_slices.h"

namespace {

constexpr std::int64_t kSecond = 1000, kHour = 3'600'000, kDay = 24 * kHour;

using Times = std::vector<std::int64_t>;

TimeSlices Counted(const Times& times, const TimeLimits& limits) {
  TimeSlices slices(limits);
  for (const std::int64_t time : times) slices.Add({time, 3, false});
  return slices;
}

// As all who count do; how often they did.
TimeSlices Best(const Times& times, int* counts = nullptr) {
  TimeSlices slices = Counted(times, {});
  int made = 1;
  for (auto better = BetterLimits(slices); better && made < 50; better = BetterLimits(slices)) {
    slices = Counted(times, *better);
    ++made;
  }
  if (counts) *counts = made;
  EXPECT_LT(made, 20);
  return slices;
}

Times Minute(std::size_t traces) {
  Times times;
  for (std::size_t i = 0; i < traces; ++i)
    times.push_back(kNine + static_cast<std::int64_t>(i) * 60 * kSecond /
                                static_cast<std::int64_t>(traces));
  return times;
}

TEST(FarTimes, OneBrokenTraceDoesNotFlattenTheOthers) {
  for (const std::int64_t broken : {std::int64_t{0}, std::int64_t{-9'000'000'000'000},
                                    std::int64_t{9'000'000'000'000}, kNine + 2 * kHour}) {
    Times times = Minute(300);
    times.push_back(broken);
    const TimeSlices slices = Best(times);
    EXPECT_LE(slices.To() - slices.From(), 61 * kSecond) << broken;
    EXPECT_GT(slices.Size(), 400U);
    EXPECT_EQ(slices.Before() + slices.Behind(), 1U);
    EXPECT_EQ(slices.Before(), broken < kNine ? 1U : 0U);
  }
}

TEST(FarTimes, BrokenOnesAtBothEndsAndAtSeveralDistancesDoNotEither) {
  Times times = Minute(3000);
  for (const std::int64_t broken :
       {std::int64_t{0}, std::int64_t{5'000'000'000'000}, std::int64_t{9'000'000'000'000},
        kNine + 700 * kDay, kNine - 3 * kDay})
    times.push_back(broken);
  const TimeSlices slices = Best(times);
  EXPECT_LE(slices.To() - slices.From(), 61 * kSecond);
  EXPECT_EQ(slices.Before(), 2U);
  EXPECT_EQ(slices.Behind(), 3U);
}

TEST(FarTimes, AQuietTimeIsNotFarUnlessItIsLong) {
  Times times = Minute(5000);
  // Ten quiet hours with a trace now and then.
  for (int i = 1; i <= 15; ++i) times.push_back(kNine + i * 40 * 60 * kSecond);
  int counts = 0;
  EXPECT_EQ(Best(times, &counts).Behind(), 0U);
  EXPECT_EQ(counts, 1);
  // Two hours after half an hour are less than 16 times as long, ten hours are more.
  times = {};
  for (int i = 0; i < 1000; ++i) times.push_back(kNine + i * 1800);
  times.push_back(kNine + 3 * kHour);
  EXPECT_EQ(Best(times).Behind(), 0U);
  times.back() = kNine + 10 * kHour;
  EXPECT_EQ(Best(times).Behind(), 1U);
  // Less than an hour after a second.
  times = {};
  for (int i = 0; i < 1000; ++i) times.push_back(kNine + i);
  times.push_back(kNine + 59 * 60 * kSecond);
  EXPECT_EQ(Best(times).Behind(), 0U);
  times.back() = kNine + 61 * 60 * kSecond;
  EXPECT_EQ(Best(times).Behind(), 1U);
}

TEST(FarTimes, FewTracesHaveNoneAndManyFarOnesAreNotFar) {
  Times few = Minute(14);
  few.push_back(kNine + kDay);
  EXPECT_EQ(Best(few).Behind(), 0U);
  few.push_back(kNine);
  EXPECT_EQ(Best(few).Behind(), 1U);
  Times many = Minute(511);
  many.push_back(kNine + kDay);
  many.push_back(kNine + kDay);
  EXPECT_EQ(Best(many).Behind(), 2U);
  many.push_back(kNine + kDay);
  EXPECT_EQ(Best(many).Behind(), 0U);
}

TEST(FarTimes, FarOnesThatHaveBecomeManyAreCountedAgain) {
  TimeSlices slices(TimeLimits{kNine, kNine + kHour});
  for (int i = 0; i < 100; ++i) slices.Add({kNine + i, 3, false});
  slices.Add({kNine + kDay, 3, false});
  EXPECT_FALSE(BetterLimits(slices).has_value());
  slices.Add({kNine + kDay + 1, 3, false});
  EXPECT_EQ(BetterLimits(slices), TimeLimits());
}

TEST(FarTimes, SlicesThatHaveBecomeFewAreMadeNarrower) {
  TimeSlices slices;
  slices.Add({kNine, 3, false});
  for (int i = 0; i < 100; ++i) slices.Add({kNine + kDay + i * 10, 3, false});
  EXPECT_GT(slices.Width(), 1);
  slices.Remove({kNine, 3, false});
  const auto better = BetterLimits(slices);
  ASSERT_TRUE(better.has_value());
  Times left;
  for (int i = 0; i < 100; ++i) left.push_back(kNine + kDay + i * 10);
  EXPECT_EQ(Counted(left, *better).Width(), 1);
}

TEST(FarTimes, CountingAnewComesToAnEndWhateverTheTimesAre) {
  std::mt19937_64 random(5);
  for (int round = 0; round < 1000; ++round) {
    Times times;
    const std::size_t traces = 1 + random() % 2000;
    const int far = static_cast<int>(random() % 12);
    for (std::size_t i = 0; i < traces; ++i)
      times.push_back(kNine + static_cast<std::int64_t>(random() % (std::uint64_t{1} << 20)));
    for (int i = 0; i < far; ++i) {
      const auto distance =
          static_cast<std::int64_t>(random() % (std::uint64_t{1} << (random() % 43)));
      times.push_back(kNine + (random() % 2 ? distance : -distance));
    }
    const TimeSlices slices = Best(times);
    std::vector<SlicedTrace> all;
    for (const std::int64_t time : times) all.push_back({time, 3, false});
    ExpectCountsOf(all, slices);
    EXPECT_LE(slices.Before() + slices.Behind(),
              std::max<std::size_t>(times.size() / 256, times.size() >= 16));
  }
}

}  // namespace
