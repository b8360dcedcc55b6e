// The time between two traces.
#include "listview/time/time_span.h"

#include <gtest/gtest.h>

#include "support/make_event.h"

namespace {

constexpr std::uint64_t kNsPs = 1000;

std::string Delta(const TraceFields& above, const TraceFields& trace) {
  const EventPtr first = MakeEvent(above), second = MakeEvent(trace);
  return DeltaText(*second, first.get());
}

TEST(TimeSpan, TracesOfOneProcessAreComparedByTheirTicCounts) {
  EXPECT_EQ(Delta({.tic = 5000 * kNsPs}, {.tic = 6250 * kNsPs}), "0.000001250");
  EXPECT_EQ(Delta({.tic = 6250 * kNsPs}, {.tic = 5000 * kNsPs}), "-0.000001250");
  EXPECT_EQ(Delta({.tic = 1}, {.tic = 1}), "0.000000000");
  EXPECT_EQ(Delta({.tic = 1}, {.tic = 999}), "0.000000000") << "less than a nanosecond";
  EXPECT_EQ(Delta({.tic = 999}, {.tic = 1}), "0.000000000");
}

TEST(TimeSpan, TheLargestTicCountsHaveADifference) {
  EXPECT_EQ(Delta({.tic = 1}, {.tic = ~std::uint64_t{0}}), "18446744.073709551");
  EXPECT_EQ(Delta({.tic = ~std::uint64_t{0}}, {.tic = 1}), "-18446744.073709551");
}

TEST(TimeSpan, OtherTracesAreComparedByDateAndTime) {
  const TraceFields first{.time = PackTime(9, 41, 7, 123), .tic = 5, .pid = 1};
  EXPECT_EQ(Delta(first, {.time = PackTime(9, 41, 8, 5), .tic = 9, .pid = 2}), "0.882");
  EXPECT_EQ(Delta(first, {.time = PackTime(9, 41, 8, 5), .tic = 0, .pid = 1}), "0.882");
  EXPECT_EQ(Delta(first, {.machine = 7, .time = PackTime(9, 41, 4, 103), .tic = 9, .pid = 1}),
            "-3.020");
  EXPECT_EQ(Delta(first, {.date = PackDate(2026, 11, 22), .time = PackTime(9, 41, 7, 123)}),
            "86400.000");
}

TEST(TimeSpan, ADateOfNoCalendarAndAMissingRowHaveNone) {
  EXPECT_EQ(Delta({.tic = 0}, {.date = PackDate(2026, 13, 40), .tic = 0}), "n/a");
  EXPECT_EQ(Delta({.date = 0, .tic = 0}, {.tic = 0}), "n/a");
  const EventPtr trace = MakeEvent({.tic = 5});
  EXPECT_EQ(DeltaText(*trace, nullptr), "n/a");
}

TEST(TimeSpan, TheEndsOfTheCalendarAreNotTooFarApart) {
  EXPECT_EQ(Delta({.date = PackDate(1678, 1, 1), .time = 0, .tic = 0},
                  {.date = PackDate(2261, 12, 31), .time = 0, .tic = 0}),
            "18429120000.000");
}

}  // namespace
