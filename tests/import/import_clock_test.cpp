#include "import/fields/import_clock.h"

#include <gtest/gtest.h>

#include "shown_import.h"
#include "support/zone_guard.h"

namespace {

constexpr std::int64_t kNov22 = 1795305600;  // 2026-11-22 00:00:00 UTC

std::string ReadTime(const std::string& text,
                     ImportTimeRules rules = {.zone = ImportZone(0), .format = {}},
                     std::int64_t latest = kNov22) {
  ImportClock clock(std::move(rules));
  clock.SetLatest(latest);
  ImportedTrace trace;
  return clock.Read(text, trace) ? ShownTime(trace) : "none";
}

std::string ReadBy(const std::string& format, const std::string& text) {
  return ReadTime(text, {.zone = ImportZone(0), .format = format});
}

TEST(ImportClock, ReadsTheUsualFormsOfDateAndTime) {
  for (const char* text : {"2026-11-21T09:41:07.123Z", "2026-11-21 09:41:07,123",
                           "2026/11/21 09:41:07.123456", "2026-11-21T10:41:07.123+01:00",
                           "2026-11-21 04:11:07.123999999 -0530", "2026-11-21T11:41:07.123+02",
                           "2026-11-21 09:41:07.123 UTC", "  2026-11-21 09:41:07.123 "}) {
    EXPECT_EQ(ReadTime(text), "2026-11-21 09:41:07.123") << text;
  }
  EXPECT_EQ(ReadTime("2026-11-21T09:41"), "2026-11-21 09:41:00.000");
  EXPECT_EQ(ReadTime("21/Nov/2026:09:41:07 +0100"), "2026-11-21 08:41:07.000");
  EXPECT_EQ(ReadTime("Nov 21 09:41:07"), "2026-11-21 09:41:07.000");
  EXPECT_EQ(ReadTime("Nov  1 09:41:07.5"), "2026-11-01 09:41:07.500");
  EXPECT_EQ(ReadTime("Nov 21 2024 09:41:07"), "2024-11-21 09:41:07.000");
}

TEST(ImportClock, ReadsNumbersSince1970ByTheirDigits) {
  EXPECT_EQ(ReadTime("1795254067"), "2026-11-21 09:41:07.000");
  EXPECT_EQ(ReadTime("1795254067.123456"), "2026-11-21 09:41:07.123");
  EXPECT_EQ(ReadTime("1795254067123"), "2026-11-21 09:41:07.123");
  EXPECT_EQ(ReadTime("1795254067123456"), "2026-11-21 09:41:07.123");
  EXPECT_EQ(ReadTime("1795254067123456789"), "2026-11-21 09:41:07.123");
  EXPECT_EQ(ReadTime("1.795254067e9"), "2026-11-21 09:41:07.000");
  EXPECT_EQ(ReadTime("0"), "1970-01-01 00:00:00.000");
}

TEST(ImportClock, WhatIsNoTimeIsNone) {
  for (const char* text :
       {"", "yesterday", "2026-13-21 09:41:07", "2026-02-29 09:41:07", "2026-11-21 24:00:00",
        "2026-11-21 09:60:00", "2026-11-21 09:41:07x", "2026-11-21", "0000-01-01 00:00:00",
        "Nov 31 09:41:07", "Foo 21 09:41:07", "-5", "99999999999999999999", "1e300", "nan",
        "12:00"}) {
    EXPECT_EQ(ReadTime(text), "none") << text;
  }
}

TEST(ImportClock, ATimeWithoutAYearIsTheLastOneBeforeTheEndOfItsInput) {
  EXPECT_EQ(ReadTime("Nov 22 12:00:00"), "2026-11-22 12:00:00.000");  // within a day
  EXPECT_EQ(ReadTime("Nov 24 12:00:00"), "2025-11-24 12:00:00.000");
  EXPECT_EQ(ReadTime("Dec 31 23:59:59"), "2025-12-31 23:59:59.000");
  EXPECT_EQ(ReadTime("Feb 29 12:00:00"), "2024-02-29 12:00:00.000");
  ImportClock clock({.zone = ImportZone(0), .format = {}});
  clock.SetLatest(kNov22);
  ImportedTrace trace;
  clock.Read("Nov 21 09:41:07", trace);
  clock.Read("2026-11-21 09:41:07", trace);
  EXPECT_EQ(clock.YearsAdded(), 1u);
}

TEST(ImportClock, ATimeWithoutAZoneIsOfTheGivenOne) {
  EXPECT_EQ(ReadTime("2026-11-21 09:41:07", {.zone = ImportZone(3600), .format = {}}),
            "2026-11-21 08:41:07.000");
  EXPECT_EQ(ReadTime("2026-11-21 09:41:07Z", {.zone = ImportZone(3600), .format = {}}),
            "2026-11-21 09:41:07.000");
}

TEST(ImportClock, OfAnHourThatComesTwiceTheFirstIsMeantAndAMissingOneIsNotPutForward) {
  const ZoneGuard zone("CET-1CEST,M3.5.0,M10.5.0/3");
  const ImportTimeRules local{};
  EXPECT_EQ(ReadTime("2026-07-01 12:00:00", local), "2026-07-01 10:00:00.000");
  EXPECT_EQ(ReadTime("2026-10-25 01:30:00", local), "2026-10-24 23:30:00.000");
  EXPECT_EQ(ReadTime("2026-10-25 02:30:00", local), "2026-10-25 00:30:00.000");  // twice
  EXPECT_EQ(ReadTime("2026-10-25 03:30:00", local), "2026-10-25 02:30:00.000");
  EXPECT_EQ(ReadTime("2026-03-29 02:30:00", local), "2026-03-29 01:30:00.000");  // missing
}

TEST(ImportClock, AFormatReadsAsStrptimeWithFractionsAndZones) {
  EXPECT_EQ(ReadBy("%d.%m.%Y %H:%M:%S.%f", "21.11.2026 09:41:07.123456"),
            "2026-11-21 09:41:07.123");
  EXPECT_EQ(ReadBy("%d.%m.%y %I:%M %p", "21.11.26 09:41 PM"), "2026-11-21 21:41:00.000");
  EXPECT_EQ(ReadBy("%Y%m%d-%H%M%S%z", "20261121-094107+0100"), "2026-11-21 08:41:07.000");
  EXPECT_EQ(ReadBy("%b %d %H:%M:%S", "Nov 21 09:41:07"), "2026-11-21 09:41:07.000");
  EXPECT_EQ(ReadBy("%s.%f", "1795254067.5"), "2026-11-21 09:41:07.500");
  EXPECT_EQ(ReadBy("%%f %Y-%m-%d", "%f 2026-11-21"), "2026-11-21 00:00:00.000");
  for (const char* text : {"", "21.11.2026", "21.11.2026 09:41:07.", "21.11.2026 09:41:07.1x"})
    EXPECT_EQ(ReadBy("%d.%m.%Y %H:%M:%S.%f", text), "none") << text;
}

TEST(ImportClock, TheHalfOfADayBehindAFractionCounts) {
  constexpr const char* kFormat = "%m/%d/%Y %I:%M:%S.%f %p";
  EXPECT_EQ(ReadBy(kFormat, "11/21/2026 02:15:33.123 PM"), "2026-11-21 14:15:33.123");
  EXPECT_EQ(ReadBy(kFormat, "11/21/2026 12:15:33.123 AM"), "2026-11-21 00:15:33.123");
}

TEST(ImportClock, AZoneThatThisMachineLacksIsRefused) {
  std::string why;
  EXPECT_FALSE(UseZone("Europe/Atlantis", &why));
  EXPECT_EQ(why, "there is no zone \"Europe/Atlantis\" in /usr/share/zoneinfo/");
  for (const char* name : {"", "../../../etc/passwd", "/etc/passwd", "+25:00", "+1"})
    EXPECT_FALSE(UseZone(name, &why)) << name;
  EXPECT_TRUE(UseZone("+02:00", &why));
}

}  // namespace
