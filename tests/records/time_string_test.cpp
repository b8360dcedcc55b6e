#include <gtest/gtest.h>

#include <thread>
#include <vector>

#include "records/trace_event.h"
#include "support/trc_image.h"
#include "support/zone_guard.h"

namespace {

// Written out, so that the tests need no zone data on the machine.
constexpr char kZurich[] = "CET-1CEST,M3.5.0,M10.5.0/3";
constexpr char kLordHowe[] = "XXX-10:30YYY-11,M10.1.0,M4.1.0";

std::string TimeString(std::uint32_t date, std::uint32_t time, bool local) {
  const GuardedBytes bytes = TrcImage("").Trace({.date = date, .time = time}).Guarded();
  return _TraceEvent_t(bytes.At(1)).GetTimeString(local);
}

std::string Local(unsigned year, unsigned month, unsigned day, unsigned hour, unsigned minute) {
  return TimeString(PackDate(year, month, day), PackTime(hour, minute, 7, 5), true);
}

TEST(TimeString, TheStoredTimeHas23CharactersWithLeadingZeros) {
  const ZoneGuard zone(kZurich);
  EXPECT_EQ(TimeString(PackDate(2026, 1, 2), PackTime(3, 4, 5, 6), false),
            "2026-01-02 03:04:05.006");
  EXPECT_EQ(TimeString(PackDate(987, 1, 2), PackTime(23, 59, 59, 999), false),
            "0987-01-02 23:59:59.999");
}

TEST(TimeString, LocalTimeFollowsTheRulesInForceAtTheTracesDate) {
  const ZoneGuard zone(kZurich);
  EXPECT_EQ(Local(2026, 1, 15, 12, 0), "2026-01-15 13:00:07.005");
  EXPECT_EQ(Local(2026, 7, 15, 12, 0), "2026-07-15 14:00:07.005");
}

TEST(TimeString, SummerTimeBeginsAndEndsInTheMiddleOfADay) {
  const ZoneGuard zone(kZurich);
  EXPECT_EQ(Local(2026, 3, 29, 0, 59), "2026-03-29 01:59:07.005");
  EXPECT_EQ(Local(2026, 3, 29, 1, 0), "2026-03-29 03:00:07.005");
  EXPECT_EQ(Local(2026, 10, 25, 0, 59), "2026-10-25 02:59:07.005");
  EXPECT_EQ(Local(2026, 10, 25, 1, 0), "2026-10-25 02:00:07.005");
}

TEST(TimeString, AZoneMayChangeInTheMiddleOfAnHourOfUtc) {
  const ZoneGuard zone(kLordHowe);  // half an hour, at 15:30 UTC
  EXPECT_EQ(Local(2026, 10, 3, 15, 29), "2026-10-04 01:59:07.005");
  EXPECT_EQ(Local(2026, 10, 3, 15, 30), "2026-10-04 02:30:07.005");
  EXPECT_EQ(Local(2026, 10, 3, 15, 29), "2026-10-04 01:59:07.005");
}

TEST(TimeString, LocalTimeMayCrossTheEndOfADayAMonthAndAYear) {
  const ZoneGuard east("XXX-5:45");
  EXPECT_EQ(Local(2026, 12, 31, 18, 15), "2027-01-01 00:00:07.005");
  const ZoneGuard west("EST5EDT,M3.2.0,M11.1.0");
  EXPECT_EQ(Local(2028, 3, 1, 4, 59), "2028-02-29 23:59:07.005");
  EXPECT_EQ(Local(1960, 1, 1, 0, 0), "1959-12-31 19:00:07.005");
}

TEST(TimeString, FieldsThatAreNoDateOrTimePrintAsTheyStand) {
  const ZoneGuard zone(kZurich);
  const std::uint32_t date = PackDate(2026, 11, 21), time = PackTime(9, 41, 7, 123);
  EXPECT_EQ(TimeString(0, 0, true), "0000-00-00 00:00:00.000");
  EXPECT_EQ(TimeString(PackDate(2026, 0, 21), time, true), "2026-00-21 09:41:07.123");
  EXPECT_EQ(TimeString(PackDate(2026, 13, 21), time, true), "2026-13-21 09:41:07.123");
  EXPECT_EQ(TimeString(PackDate(2026, 2, 29), time, true), "2026-02-29 09:41:07.123");
  EXPECT_EQ(TimeString(PackDate(2026, 2, 0), time, true), "2026-02-00 09:41:07.123");
  EXPECT_EQ(TimeString(date, PackTime(31, 41, 7, 123), true), "2026-11-21 31:41:07.123");
  EXPECT_EQ(TimeString(date, PackTime(9, 60, 7, 123), true), "2026-11-21 09:60:07.123");
  EXPECT_EQ(TimeString(date, PackTime(9, 41, 60, 123), true), "2026-11-21 09:41:60.123");
  EXPECT_EQ(TimeString(date, PackTime(9, 41, 7, 2047), true), "2026-11-21 09:41:07.2047");
  EXPECT_EQ(TimeString(0xFFFFFFFF, 0xFFFFFFFF, true), "2097151-31-63 127:127:127.2047");
  EXPECT_EQ(TimeString(0xFFFFFFFF, 0xFFFFFFFF, false), "2097151-31-63 127:127:127.2047");
}

TEST(TimeString, TheFirstAndTheLastYearAreConverted) {
  const ZoneGuard zone("XXX-14");
  EXPECT_EQ(Local(9999, 12, 31, 23, 0), "10000-01-01 13:00:07.005");
  const ZoneGuard west("XXX+12");
  EXPECT_EQ(Local(1, 1, 1, 0, 0), "0000-12-31 12:00:07.005");
}

TEST(TimeString, ManyThreadsGetTheSameAnswers) {
  const ZoneGuard zone(kZurich);
  const auto allHours = [] {
    std::string text;
    for (unsigned month = 1; month <= 12; ++month) {
      for (unsigned hour = 0; hour < 24; ++hour) text += Local(2026, month, 28, hour, 30) + '\n';
    }
    return text;
  };
  std::vector<std::string> texts(4);
  std::vector<std::thread> threads;
  for (std::string& text : texts) threads.emplace_back([&] { text = allHours(); });
  for (std::thread& thread : threads) thread.join();
  ForgetZone();
  EXPECT_EQ(texts, std::vector<std::string>(4, allHours()));
}

}  // namespace
