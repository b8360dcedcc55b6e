#include "overview/window/overview_texts.h"

#include "base/text.h"
#include "statistics/stat_texts.h"

namespace {

constexpr std::size_t kDateEnd = 10, kTimeAt = 11;  // of "2026-11-21 09:41:07.123"

std::string WholeTime(std::int64_t time, bool utc) {
  return StampText(StampFrom(MomentOfMs(time)), utc);
}

// Behind the last digit that a step needs.
std::size_t EndFor(std::int64_t step) {
  constexpr std::size_t kMinutes = 16, kSeconds = 19, kAll = 23;
  if (step % Milliseconds::kMinute == 0) return kMinutes;
  return step % Milliseconds::kSecond == 0 ? kSeconds : kAll;
}

}  // namespace

std::string TimeLabel(std::int64_t time, std::int64_t step, bool utc) {
  const std::string whole = WholeTime(time, utc);
  if (step % Milliseconds::kDay == 0) return whole.substr(0, kDateEnd);
  return whole.substr(kTimeAt, EndFor(step) - kTimeAt);
}

std::string DateTimeLabel(std::int64_t time, std::int64_t step, bool utc) {
  return WholeTime(time, utc).substr(0, EndFor(step));
}

std::string CountText(std::uint64_t count, const char* one, const char* many) {
  return GroupDigits(count) + " " + (count == 1 ? one : many);
}

std::string CountsText(const SliceCounts& counts, const TimeLimits& time, bool utc) {
  std::string text = CountText(counts.Traces(), "trace", "traces");
  const std::string from = WholeTime(time.from, utc), to = WholeTime(time.to, utc);
  const bool isExact =
      time.from % Milliseconds::kSecond == 0 && time.to % Milliseconds::kSecond == 0;
  const std::size_t end = EndFor(isExact ? Milliseconds::kSecond : 1);
  const std::size_t begin = from.substr(0, kDateEnd) == to.substr(0, kDateEnd) ? kTimeAt : 0;
  text += " from " + from.substr(begin, end - begin) + " to " + to.substr(begin, end - begin);
  if (counts.severities[2] > 0) text += ", " + CountText(counts.severities[2], "error", "errors");
  if (counts.severities[1] > 0)
    text += ", " + CountText(counts.severities[1], "warning", "warnings");
  if (counts.losses > 0)
    text += ", " + CountText(counts.losses, "report of lost traces", "reports of lost traces");
  return text;
}
