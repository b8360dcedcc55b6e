// How long the first trace of a program waits for the settings that its service keeps.
#include <algorithm>
#include <chrono>
#include <quor/quor.hpp>

#include "quord_client.h"

namespace {

QUOR_POINT(first_point, "Net", "Connect");

constexpr int kStarts = 200;
using Times = std::vector<std::uint64_t>;  // microseconds

// Of the first trace of a process, in each of so many processes.
Times FirstTraces(const char* wait) {
  Times times;
  for (int i = 0; i < kStarts; ++i) {
    TracedChild app([wait](TracedChild& self) {
      setenv("QUOR_WAIT", wait, 1);
      const auto begin = std::chrono::steady_clock::now();
      QUOR_TRACE_INFO(first_point, "first");
      const auto time = std::chrono::steady_clock::now() - begin;
      self.Report(static_cast<std::uint64_t>(
          std::chrono::duration_cast<std::chrono::microseconds>(time).count()));
      return 0;
    });
    times.push_back(app.Reported());
    EXPECT_EQ(app.Wait(), 0);
  }
  std::sort(times.begin(), times.end());
  return times;
}

std::uint64_t Median(const Times& times) {
  return times[times.size() / 2];
}

void Print(const char* when, const Times& times) {
  std::printf("first trace %-34s median %5llu us, worst %6llu us\n", when,
              static_cast<unsigned long long>(Median(times)),
              static_cast<unsigned long long>(times.back()));
}

TEST(FirstWait, IsShortAtALiveServiceAndNoneWithoutOne) {
  QuordProcess quord;
  const Times without = FirstTraces("2");
  quord.Start();
  const Times off = FirstTraces("0"), with = FirstTraces("2");
  Print("without a service", without);
  Print("with a service, QUOR_WAIT=0", off);
  Print("with a service", with);
  // The bound is two milliseconds; the rest is what a busy machine adds.
  EXPECT_LE(Median(with), Median(off) + 3000);
  EXPECT_LE(Median(without), Median(off) + 1000);
}

// A service that stands still costs no more than the bound, and the trace is there.
TEST(FirstWait, EndsWithItsTimeWhenTheServiceDoesNotAnswer) {
  QuordProcess quord;
  quord.Start();
  kill(quord.Pid(), SIGSTOP);
  const Times times = FirstTraces("2");
  kill(quord.Pid(), SIGCONT);
  Print("at a service that stands still", times);
  EXPECT_GE(times.front(), 2000u) << "it was not waited for";
  EXPECT_LE(Median(times), 20000u);
}

}  // namespace
