#include "listview/time/zone_text.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <ctime>

#include "records/zone_offset.h"
#include "where/where_clock.h"

namespace {

constexpr std::int64_t kPerSecond = 1'000'000'000;
// Clocks change twice a year at most places. In longer files more looks find no more than that.
constexpr std::int64_t kLookEvery = 30 * 86'400, kLooksMax = 40;

std::optional<std::int64_t> SecondsOf(const TraceEvent_i& trace) {
  const auto moment = MomentOfStamp(std::uint64_t{trace.GetDate()} << 32 | trace.GetTime());
  if (!moment) return std::nullopt;
  return *moment / kPerSecond;
}

std::string OffsetText(int seconds) {
  char text[16];
  const int minutes = std::abs(seconds) / 60;
  std::snprintf(text, sizeof text, "%c%02d:%02d", seconds < 0 ? '-' : '+', minutes / 60,
                minutes % 60);
  return text;
}

}  // namespace

std::string ZoneText(const TraceList_t& traces, bool utc) {
  if (utc) return "UTC";
  std::int64_t first = std::time(nullptr), last = first;
  if (!traces.empty()) {
    const auto oldest = SecondsOf(*traces.front()), newest = SecondsOf(*traces.back());
    const std::int64_t begin = oldest.value_or(newest.value_or(first));
    const std::int64_t end = newest.value_or(begin);
    first = std::min(begin, end);
    last = std::max(begin, end);
  }
  int least = ZoneOffsetSeconds(first), most = least;
  const auto look = [&](std::int64_t moment) {
    const int offset = ZoneOffsetSeconds(moment);
    least = std::min(least, offset);
    most = std::max(most, offset);
  };
  for (std::int64_t i = 1; i <= kLooksMax && first + i * kLookEvery < last; ++i)
    look(first + i * kLookEvery);
  look(last);
  const std::string text = "UTC" + OffsetText(least);
  return least == most ? text : text + "/" + OffsetText(most);
}
