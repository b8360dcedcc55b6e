#include "where/where_clock.h"

#include <gtest/gtest.h>

#include <limits>
#include <random>

#include "support/zone_guard.h"
#include "where/text/where_values.h"

namespace {

constexpr std::int64_t kHour = 3'600'000'000'000;

std::int64_t At(const char* text, const WhereClock& clock = {}) {
  const auto said = ReadWhereMoment(text);
  EXPECT_TRUE(said) << text;
  return said ? MomentOf(*said, clock).value_or(0) : 0;
}

TEST(WhereClock, AStampHasTheOrderOfItsMoment) {
  std::mt19937_64 random(5);
  for (int i = 0; i < 20'000; ++i) {
    // Up to some centuries to both sides of 1970; some at a whole millisecond.
    auto moment = static_cast<std::int64_t>(random());
    if (i % 2) moment -= moment % 1'000'000;
    const WhereStamp from = StampFrom(moment), after = StampAfter(moment);
    if (const auto begins = MomentOfStamp(from)) {
      ASSERT_GE(*begins, moment);
      ASSERT_LT(*begins - 1'000'000, moment);
    }
    if (const auto begins = MomentOfStamp(after)) {
      ASSERT_GT(*begins, moment);
      ASSERT_LE(*begins - 1'000'000, moment);
    }
    ASSERT_LE(from, after);
  }
}

TEST(WhereClock, TheLastMomentsOfAllHaveStamps) {
  EXPECT_LT(StampFrom(std::numeric_limits<std::int64_t>::min()), StampFrom(0));
  EXPECT_GT(StampAfter(std::numeric_limits<std::int64_t>::max()), StampFrom(0));
  const WhereMoment late{WhereMoment::Base::End, std::numeric_limits<std::int64_t>::max(), 1};
  EXPECT_EQ(MomentOf(late, {true, 5}), std::numeric_limits<std::int64_t>::max());
  EXPECT_EQ(MomentBehind(late, {true, 5}), std::numeric_limits<std::int64_t>::max());
}

TEST(WhereClock, FieldsThatAreNoTimeAreNoMoment) {
  const auto stamp = [](std::uint32_t date, std::uint32_t time) {
    return std::uint64_t{date} << 32 | time;
  };
  EXPECT_EQ(MomentOfStamp(stamp(PackDate(1970, 1, 2), PackTime(1, 0, 0, 5))),
            25 * kHour + 5'000'000);
  EXPECT_FALSE(MomentOfStamp(0));
  EXPECT_FALSE(MomentOfStamp(~std::uint64_t{0}));
  EXPECT_FALSE(MomentOfStamp(stamp(PackDate(2026, 2, 30), 0)));
  EXPECT_FALSE(MomentOfStamp(stamp(PackDate(2026, 2, 3), PackTime(24, 0, 0, 0))));
}

TEST(WhereClock, ATimeWithoutAZoneIsOfTheClockThatIsShown) {
  const ZoneGuard zone("CET-1CEST,M3.5.0,M10.5.0/3");
  const std::int64_t utc = At("2026-07-01T12:00Z");
  EXPECT_EQ(At("2026-07-01T14:00"), utc);
  EXPECT_EQ(At("2026-07-01T14:00", {.utc = true}), utc + 2 * kHour);
  EXPECT_EQ(At("2026-01-01T01:00"), At("2026-01-01T00:00Z"));
}

TEST(WhereClock, ATimeThatTheClockShowsTwiceIsTheFirstAndOneThatItLeavesOutCounts) {
  const ZoneGuard zone("CET-1CEST,M3.5.0,M10.5.0/3");
  EXPECT_EQ(At("2026-10-25T02:30"), At("2026-10-25T00:30Z"));
  EXPECT_EQ(At("2026-10-25T03:00"), At("2026-10-25T02:00Z"));
  EXPECT_EQ(At("2026-03-29T02:30"), At("2026-03-29T01:30Z"));
  EXPECT_EQ(At("2026-03-29T01:59"), At("2026-03-29T00:59Z"));
  EXPECT_EQ(At("2026-03-29T03:00"), At("2026-03-29T01:00Z"));
}

// UTC has the change more than twelve hours before the clock of such a zone shows it.
TEST(WhereClock, AZoneFarAheadReadsTheHoursAroundAChangeAsAnyOther) {
  const ZoneGuard zone("FAR-13FAST,M9.5.0/3,M4.1.0/4");
  EXPECT_EQ(At("2026-04-05T02:30"), At("2026-04-05T02:30+14:00"));
  EXPECT_EQ(At("2026-04-05T03:30"), At("2026-04-05T03:30+14:00"));
  EXPECT_EQ(At("2026-04-05T04:00"), At("2026-04-05T04:00+13:00"));
  EXPECT_EQ(At("2026-09-27T02:30"), At("2026-09-27T02:30+13:00"));
  EXPECT_EQ(At("2026-09-27T03:30"), At("2026-09-27T03:30+13:00"));
  EXPECT_EQ(At("2026-09-27T04:30"), At("2026-09-27T04:30+14:00"));
}

TEST(WhereClock, ADayIsAsLongAsTheClockShowsIt) {
  const ZoneGuard zone("CET-1CEST,M3.5.0,M10.5.0/3");
  const auto length = [](const char* day) {
    const auto said = ReadWhereMoment(day);
    return *MomentBehind(*said, {}) - *MomentOf(*said, {});
  };
  EXPECT_EQ(length("2026-10-25"), 25 * kHour);
  EXPECT_EQ(length("2026-03-29"), 23 * kHour);
  EXPECT_EQ(length("2026-07-01"), 24 * kHour);
}

}  // namespace
