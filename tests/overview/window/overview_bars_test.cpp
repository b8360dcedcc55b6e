#include "overview/window/overview_bars.h"

#include <gtest/gtest.h>

#include <random>

#include "overview/window/bar_heights.h"
#include "overview/window/overview_texts.h"
#include "support/zone_guard.h"

namespace {

constexpr std::int64_t kNine = 1'795'251'600'000;  // 2026-11-21 09:00:00 UTC

int SixPxALetter(const std::string& text) {
  return 6 * static_cast<int>(text.size());
}

std::string TextsOf(const std::vector<OverviewLabel>& labels) {
  std::string all;
  for (const OverviewLabel& label : labels) all += (all.empty() ? "" : "|") + label.text;
  return all;
}

TEST(OverviewBars, HaveEachTraceOnceAndAreWholeSlices) {
  std::mt19937_64 random(3);
  for (int round = 0; round < 300; ++round) {
    TimeSlices slices;
    const std::uint64_t span = 1 + random() % (std::uint64_t{1} << (random() % 40));
    const std::uint64_t traces = 1 + random() % 500;
    for (std::uint64_t i = 0; i < traces; ++i)
      slices.Add({kNine + static_cast<std::int64_t>(random() % span), 3, false});
    const OverviewScale scale = {slices.From(), slices.To(), 1 + static_cast<int>(random() % 3000)};
    const int least = 1 + static_cast<int>(random() % 20);
    std::uint64_t counted = 0;
    int before = 0;
    for (const OverviewBar& bar : BarsOf(slices, scale, least)) {
      counted += bar.counts.Traces();
      EXPECT_EQ(bar.counts, slices.Between(bar.time));
      EXPECT_EQ(bar.time.from % slices.Width(), 0);
      EXPECT_GE(bar.fromPx, before);
      EXPECT_GT(bar.toPx, bar.fromPx);
      EXPECT_LE(bar.fromPx, scale.widthPx);
      EXPECT_EQ(BarTimeAt(slices, scale, least, bar.time.from), bar.time);
      EXPECT_EQ(BarTimeAt(slices, scale, least, bar.time.to - 1), bar.time);
      before = bar.fromPx;
    }
    ASSERT_EQ(counted, traces);
  }
}

TEST(OverviewBars, PixelsAndTimesLeadToOneAnother) {
  const OverviewScale scale = {kNine, kNine + 10'000, 1000};
  EXPECT_EQ(scale.PxOf(kNine), 0);
  EXPECT_EQ(scale.PxOf(kNine + 10'000), 1000);
  EXPECT_EQ(scale.PxOf(kNine + 5'000), 500);
  EXPECT_LT(scale.PxOf(kNine - 5'000'000), 0);
  EXPECT_EQ(scale.TimeAt(500), kNine + 5'000);
  EXPECT_EQ(scale.TimeAt(-5), kNine);
  EXPECT_EQ(scale.TimeAt(5000), kNine + 10'000);
}

TEST(OverviewLabels, AreTheEndsAndRoundTimesBetween) {
  const OverviewScale minute = {kNine, kNine + 60'000, 800};
  EXPECT_EQ(TextsOf(LabelsOf(minute, true, SixPxALetter)),
            "2026-11-21 09:00:00|09:01:00|09:00:20|09:00:30|09:00:40|09:00:50");
  const OverviewScale days = {kNine, kNine + 10 * Milliseconds::kDay, 600};
  EXPECT_EQ(TextsOf(LabelsOf(days, true, SixPxALetter)).substr(0, 39),
            "2026-11-21 09:00:00|2026-12-01 09:00:00");
  const OverviewScale instant = {kNine, kNine + 40, 900};
  EXPECT_EQ(TextsOf(LabelsOf(instant, true, SixPxALetter)).substr(0, 36),
            "2026-11-21 09:00:00.000|09:00:00.040");
}

TEST(OverviewLabels, AreRoundInTheZoneOfTheTimes) {
  const ZoneGuard zone("IST-5:30");
  const OverviewScale hours = {kNine, kNine + 6 * Milliseconds::kHour, 700};
  const std::string texts = TextsOf(LabelsOf(hours, false, SixPxALetter));
  EXPECT_EQ(texts.substr(0, 28), "2026-11-21 14:30:00|20:30:00");
  EXPECT_NE(texts.find("|17:00|"), std::string::npos) << texts;
}

TEST(OverviewLabels, DoNotCoverOneAnotherAtAnyWidth) {
  for (const std::int64_t span : {1, 50, 999, 60'000, 86'400'000}) {
    for (int width = 1; width < 2000; width += 37) {
      const OverviewScale scale = {kNine + 7, kNine + 7 + span, width};
      std::vector<std::pair<int, int>> places;
      for (const OverviewLabel& label : LabelsOf(scale, true, SixPxALetter))
        places.emplace_back(label.px, label.px + SixPxALetter(label.text));
      std::sort(places.begin(), places.end());
      for (std::size_t i = 1; i < places.size(); ++i)
        EXPECT_GE(places[i].first, places[i - 1].second) << span << " " << width;
      EXPECT_EQ(places.front().first, 0);
      if (places.size() > 1) {
        EXPECT_LE(places.back().second, width);
      }
    }
  }
}

TEST(OverviewTexts, SayCountsTimesErrorsWarningsAndLosses) {
  SliceCounts counts;
  counts.severities = {12'000, 1, 12, 288};
  EXPECT_EQ(CountsText(counts, {kNine + 2000, kNine + 7000}, true),
            "12,301 traces from 09:00:02 to 09:00:07, 12 errors, 1 warning");
  counts = {};
  counts.severities = {1, 0, 0, 0};
  counts.losses = 1;
  EXPECT_EQ(CountsText(counts, {kNine, kNine + 5}, true),
            "1 trace from 09:00:00.000 to 09:00:00.005, 1 report of lost traces");
  EXPECT_EQ(CountsText({}, {kNine, kNine + Milliseconds::kDay}, true),
            "0 traces from 2026-11-21 09:00:00 to 2026-11-22 09:00:00");
}

TEST(BarHeights, TheHighestBarFillsTheRoomAndErrorsAreSeen) {
  using Heights = std::array<int, 4>;
  const auto heights = [](std::array<std::uint32_t, 4> severities, std::uint64_t highest,
                          int room) {
    SliceCounts counts;
    counts.severities = severities;
    return HeightsOf(counts, highest, room);
  };
  EXPECT_EQ(heights({100, 0, 0, 0}, 100, 30), (Heights{0, 30, 0, 0}));
  EXPECT_EQ(heights({50, 0, 0, 50}, 100, 30), (Heights{15, 15, 0, 0}));
  EXPECT_EQ(heights({9999, 0, 1, 0}, 10'000, 30), (Heights{0, 27, 0, 3}));
  EXPECT_EQ(heights({1, 0, 0, 0}, 100'000, 30), (Heights{0, 1, 0, 0}));
  EXPECT_EQ(heights({0, 0, 1, 0}, 100'000, 30), (Heights{0, 0, 0, 3}));
  EXPECT_EQ(heights({0, 0, 0, 0}, 100, 30), (Heights{0, 0, 0, 0}));
}

TEST(BarHeights, AreNeverMoreThanTheRoom) {
  std::mt19937 random(1);
  for (int i = 0; i < 20'000; ++i) {
    SliceCounts counts;
    for (std::uint32_t& part : counts.severities)
      if (random() % 2) part = static_cast<std::uint32_t>(random() % (1U << random() % 20));
    const std::uint64_t highest = counts.Traces() + random() % 1000;
    const int room = 1 + static_cast<int>(random() % 100);
    const auto heights = HeightsOf(counts, highest, room);
    int all = 0;
    for (std::size_t part = 0; part < heights.size(); ++part) {
      ASSERT_GE(heights[part], 0);
      all += heights[part];
      if (room < 10) continue;
      ASSERT_EQ(heights[part] > 0, counts.severities[kBarOrder[part]] > 0) << room;
    }
    ASSERT_LE(all, room);
    if (counts.Traces() > 0) {
      ASSERT_GT(all, 0);
    }
    if (counts.Traces() == highest && highest > 0) {
      ASSERT_EQ(all, room);
    }
  }
}

}  // namespace
