// The times of traces in microseconds.
#include "records/moments/trace_moments.h"

#include <gtest/gtest.h>

#include "support/make_event.h"

namespace {

constexpr std::uint64_t kUsPs = 1'000'000;

// A trace at 09:41:07 and these microseconds, as a clock of milliseconds and a counter see it.
EventPtr At(unsigned us, NameId process = 1) {
  return MakeEvent(
      {.time = PackTime(9, 41, 7, us / 1000), .tic = (5'000'000 + us) * kUsPs, .pid = process});
}

std::string Known(TraceMoments& moments, std::optional<std::uint64_t> place,
                  const TraceEvent_i& trace) {
  std::string text;
  EXPECT_TRUE(moments.AppendKnown(text, place, trace));
  return text;
}

TEST(TraceMoments, ATimeHasThreeDigitsUntilTheTicCountsTellMore) {
  TraceMoments moments(true);
  const EventPtr one = At(1400), two = At(2000);
  EXPECT_EQ(Known(moments, 0, *one), "2026-11-21T09:41:07.001Z");
  moments.Learn(0, *one);
  moments.Learn(1, *two);
  EXPECT_EQ(Known(moments, 0, *one), "2026-11-21T09:41:07.001400Z");
  EXPECT_EQ(Known(moments, std::nullopt, *one), "2026-11-21T09:41:07.001Z");
}

TEST(TraceMoments, ATraceWithoutATicCountHasThreeDigitsAndSixForPrograms) {
  TraceMoments moments(true);
  const EventPtr plain = MakeEvent({.time = PackTime(9, 41, 7, 5), .tic = 0});
  moments.Learn(0, *plain);
  EXPECT_EQ(Known(moments, 0, *plain), "2026-11-21T09:41:07.005Z");
  std::string six;
  moments.Append(six, 0, *plain);
  EXPECT_EQ(six, "2026-11-21T09:41:07.005000Z");
}

TEST(TraceMoments, AnotherProcessHasItsOwnMoment) {
  TraceMoments moments(true);
  const EventPtr one = At(1400), other = At(1400, 2);
  moments.Learn(0, *one);
  EXPECT_EQ(Known(moments, 0, *other), "2026-11-21T09:41:07.001Z");
}

TEST(TraceMoments, TheZoneMayChangeBetweenTwoTimesOfOneSecond) {
  TraceMoments moments(false);
  const EventPtr one = At(1400);
  const std::string local = Known(moments, 0, *one);
  moments.UseUtc(true);
  EXPECT_EQ(Known(moments, 0, *one), "2026-11-21T09:41:07.001Z");
  moments.UseUtc(false);
  EXPECT_EQ(Known(moments, 0, *one), local);
}

}  // namespace
