// What a filter text may say at the source, and how it is written for it.
#include "where/source/where_at_source.h"

#include <gtest/gtest.h>
#include <stdlib.h>
#include <time.h>

#include "where/where_program.h"

namespace {

std::string ForSource(const std::string& text, bool utc = true) {
  WhereError error;
  const auto expr = ParseWhere(text, error);
  EXPECT_TRUE(expr) << error.reason;
  const auto written = TextAtSource(*expr, utc, error);
  if (!written)
    return std::to_string(error.place) + "+" + std::to_string(error.length) + ": " + error.reason;
  EXPECT_TRUE(ParseAtSource(*written, error)) << *written << ": " << error.reason;
  return *written;
}

std::string Refused(const std::string& text) {
  WhereError error;
  EXPECT_FALSE(ParseAtSource(text, error)) << text;
  return std::to_string(error.place) + "+" + std::to_string(error.length) + ": " + error.reason;
}

TEST(WhereAtSource, ATextOfIdsAndTextsIsTakenAsItIs) {
  for (const char* text :
       {"severity >= warn", "component in {Sql, Cache} and not text contains \"retry\"",
        "text matches \"order [0-9]+|cart\"", "account == alice or stack contains \"main\"",
        "time > 2026-11-21T09:41:07Z", "pid == 4711 and count in {10..20}"})
    EXPECT_EQ(ForSource(text), text);
}

TEST(WhereAtSource, WhatTheSourceCannotKnowIsRefusedWithItsPlace) {
  EXPECT_EQ(Refused("severity >= warn and delta > 5ms"),
            "21+11: the source does not know the trace before: \"delta\" works in the window only");
  EXPECT_EQ(Refused("time > end - 5m"),
            "7+8: the source does not know the newest trace: \"end\" works in the window only");
  EXPECT_EQ(Refused("time > 2026-11-21"),
            "7+10: the source does not know the zone: a time needs one, as \"Z\"");
  EXPECT_EQ(ForSource("not (pid == 1 or delta > 1s)"),
            "17+10: the source does not know the trace before: \"delta\" works in the window only");
  EXPECT_EQ(Refused("marked == 3"),
            "0+11: the source does not know marks and notes: \"marked\" works in the window only");
  EXPECT_EQ(ForSource("pid == 1 or note contains \"x\""),
            "12+17: the source does not know marks and notes: \"note\" works in the window only");
  EXPECT_EQ(Refused("component = x").substr(0, 5), "10+1:");
}

TEST(WhereAtSource, ATimeWithoutAZoneGetsThatOfTheMonitor) {
  EXPECT_EQ(ForSource("time >= 2026-11-21T09:41"), "time >= 2026-11-21T09:41:00.000000000Z");
  EXPECT_EQ(
      ForSource("not time == 2026-11-21"),
      "not (time >= 2026-11-21T00:00:00.000000000Z and time < 2026-11-22T00:00:00.000000000Z)");
  EXPECT_EQ(ForSource("time != 2026-11-21 and pid == 1"),
            "not (time >= 2026-11-21T00:00:00.000000000Z and time < "
            "2026-11-22T00:00:00.000000000Z) and pid == 1");
  setenv("TZ", "CET-1CEST,M3.5.0,M10.5.0/3", 1);
  tzset();
  EXPECT_EQ(ForSource("time < 2026-11-21T09:41:07.5", false),
            "time < 2026-11-21T08:41:07.500000000Z");
  EXPECT_EQ(ForSource("time == 2026-03-29", false),
            "time >= 2026-03-28T23:00:00.000000000Z and time < 2026-03-29T22:00:00.000000000Z");
  unsetenv("TZ");
  tzset();
}

TEST(WhereAtSource, ATextIsBoundedInItsLengthItsTestsAndItsExpressions) {
  EXPECT_EQ(Refused("text contains \"" + std::string(kSourceTextMax, 'x') + "\""),
            "4096+0: at the source a text has at most 4096 bytes");
  std::string tests = "pid == 1";
  for (std::size_t i = 1; i < kSourceTestsMax; ++i) tests += " or pid == 1";
  WhereError error;
  EXPECT_TRUE(ParseAtSource(tests, error));
  EXPECT_EQ(
      Refused(tests + " or tid == 2"),
      std::to_string(tests.size() + 4) + "+8: at the source a text compares at most 32 fields");
  std::string expressions = "text matches a";
  for (std::size_t i = 1; i < kSourceExpressionsMax; ++i) expressions += " or text matches a";
  EXPECT_TRUE(ParseAtSource(expressions, error));
  EXPECT_EQ(Refused(expressions + " or text matches b"),
            std::to_string(expressions.size() + 17) +
                "+1: at the source a text has at most 4 \"matches\"");
  EXPECT_EQ(Refused("text matches \"" + std::string(kSourceExpressionBytes + 1, 'a') + "\""),
            "13+259: at the source an expression has at most 256 bytes");
}

}  // namespace
