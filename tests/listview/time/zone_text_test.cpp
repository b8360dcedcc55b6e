// The zone of times in the status bar.
#include "listview/time/zone_text.h"

#include <gtest/gtest.h>

#include "support/make_event.h"
#include "support/zone_guard.h"

namespace {

constexpr char kBerlin[] = "CET-1CEST,M3.5.0,M10.5.0/3";

std::string Zone(std::initializer_list<std::uint32_t> dates, bool utc = false) {
  TraceList_t traces;
  for (const std::uint32_t date : dates) traces.push_back(MakeEvent({.date = date}).release());
  return ZoneText(traces, utc);
}

TEST(ZoneText, IsUtcWhereTimesAreShownInIt) {
  const ZoneGuard zone(kBerlin);
  EXPECT_EQ(Zone({PackDate(2026, 11, 21)}, true), "UTC");
}

TEST(ZoneText, IsThatOfTheTracesAndNotOfThePresent) {
  const ZoneGuard zone(kBerlin);
  EXPECT_EQ(Zone({PackDate(2026, 1, 21)}), "UTC+01:00");
  EXPECT_EQ(Zone({PackDate(2026, 7, 21), PackDate(2026, 7, 22)}), "UTC+02:00");
}

TEST(ZoneText, NamesBothWhereTheClocksChangeWithinTheFile) {
  const ZoneGuard zone(kBerlin);
  EXPECT_EQ(Zone({PackDate(2026, 3, 28), PackDate(2026, 3, 30)}), "UTC+01:00/+02:00");
  EXPECT_EQ(Zone({PackDate(2026, 10, 30), PackDate(2026, 3, 30)}), "UTC+01:00/+02:00");
  EXPECT_EQ(Zone({PackDate(2025, 1, 10), PackDate(2026, 1, 10)}), "UTC+01:00/+02:00")
      << "both ends are in winter";
}

TEST(ZoneText, WestOfGreenwichAndZonesOfHalfAnHourHaveTheirSign) {
  const ZoneGuard zone("XST3:30");
  EXPECT_EQ(Zone({PackDate(2026, 1, 21)}), "UTC-03:30");
  const ZoneGuard india("IST-5:30");
  EXPECT_EQ(Zone({PackDate(2026, 1, 21)}), "UTC+05:30");
}

TEST(ZoneText, ALocalZoneWithoutADifferenceIsNotTakenForTheOption) {
  const ZoneGuard zone("GMT0");
  EXPECT_EQ(Zone({PackDate(2026, 1, 21)}), "UTC+00:00");
}

TEST(ZoneText, TracesWithoutADateHaveTheZoneOfThePresent) {
  const ZoneGuard zone("EST5");
  EXPECT_EQ(Zone({}), "UTC-05:00");
  EXPECT_EQ(Zone({0, 0}), "UTC-05:00");
}

}  // namespace
