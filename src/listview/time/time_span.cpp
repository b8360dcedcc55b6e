#include "listview/time/time_span.h"

#include <cstdio>

#include "where/where_clock.h"

namespace {

constexpr char kNoSpan[] = "n/a";
constexpr std::uint64_t kNanosecondPs = 1000, kSecondNs = 1'000'000'000, kMillisecondNs = 1'000'000;

std::string SecondsText(bool negative, std::uint64_t nanoseconds, bool exact) {
  char text[40];
  const auto seconds = static_cast<unsigned long long>(nanoseconds / kSecondNs);
  const auto part = static_cast<unsigned long long>(nanoseconds % kSecondNs);
  const char* const sign = negative && nanoseconds != 0 ? "-" : "";
  if (exact)
    std::snprintf(text, sizeof text, "%s%llu.%09llu", sign, seconds, part);
  else
    std::snprintf(text, sizeof text, "%s%llu.%03llu", sign, seconds, part / kMillisecondNs);
  return text;
}

}  // namespace

TracePoint::TracePoint(const TraceEvent_i& trace)
    : stamp(std::uint64_t{trace.GetDate()} << 32 | trace.GetTime()),
      tic(trace.GetTicCount()),
      process(std::uint32_t{trace.GetMachineId()} << 16 | trace.GetPidId()) {}

std::string TimeSpanText(const TracePoint& a, const TracePoint& b) {
  if (a.process == b.process && a.tic != 0 && b.tic != 0) {
    const bool negative = b.tic < a.tic;
    const std::uint64_t between = negative ? a.tic - b.tic : b.tic - a.tic;
    return SecondsText(negative, between / kNanosecondPs, true);
  }
  const auto from = MomentOfStamp(a.stamp), to = MomentOfStamp(b.stamp);
  if (!from || !to) return kNoSpan;
  const bool negative = *to < *from;
  // Two moments that 64 bits hold may be further apart than a signed number counts.
  const auto first = static_cast<std::uint64_t>(*from), second = static_cast<std::uint64_t>(*to);
  return SecondsText(negative, negative ? first - second : second - first, false);
}

std::string DeltaText(const TraceEvent_i& trace, const TraceEvent_i* above) {
  return above ? TimeSpanText(TracePoint(*above), TracePoint(trace)) : kNoSpan;
}
