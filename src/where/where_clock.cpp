#include "where/where_clock.h"

#include <chrono>
#include <limits>

#include "records/zone_offset.h"

namespace {

constexpr std::int64_t kSecond = 1'000'000'000, kMillisecond = 1'000'000;
constexpr std::int64_t kDayMs = 86'400'000;

std::int64_t Plus(std::int64_t a, std::int64_t b) {
  std::int64_t sum = 0;
  if (!__builtin_add_overflow(a, b, &sum)) return sum;
  return b < 0 ? std::numeric_limits<std::int64_t>::min()
               : std::numeric_limits<std::int64_t>::max();
}

std::int64_t FloorDivided(std::int64_t number, std::int64_t by) {
  return number / by - (number % by < 0 ? 1 : 0);
}

// The moment at which a clock of the local zone shows these seconds. A time that the clock shows
// twice is the first one; one that it leaves out is as late as the clock before would have it.
std::int64_t UtcOfLocal(std::int64_t localSeconds) {
  // More than any clock differs from UTC, so that a change lies between the two.
  constexpr std::int64_t kDay = 86'400;
  const std::int64_t before = ZoneOffsetSeconds(localSeconds - kDay);
  const std::int64_t after = ZoneOffsetSeconds(localSeconds + kDay);
  for (const std::int64_t offset : {before, after})
    if (ZoneOffsetSeconds(localSeconds - offset) == offset) return localSeconds - offset;
  return localSeconds - before;
}

std::int64_t UtcOfShown(std::int64_t shown, const WhereClock& clock) {
  if (clock.utc) return shown;
  const std::int64_t seconds = FloorDivided(shown, kSecond);
  return Plus(shown, (UtcOfLocal(seconds) - seconds) * kSecond);
}

WhereStamp StampOfMs(std::int64_t ms) {
  using namespace std::chrono;
  const std::int64_t day = FloorDivided(ms, kDayMs), inDay = ms - day * kDayMs;
  const year_month_day date{sys_days(days(day))};
  const std::uint64_t packed = PackDate(static_cast<unsigned>(static_cast<int>(date.year())),
                                        unsigned{date.month()}, unsigned{date.day()});
  const auto part = static_cast<unsigned>(inDay);
  return packed << 32 |
         PackTime(part / 3'600'000, part / 60'000 % 60, part / 1000 % 60, part % 1000);
}

}  // namespace

std::optional<std::int64_t> MomentOfStamp(WhereStamp stamp) {
  using namespace std::chrono;
  constexpr unsigned kFirstYear = 1678, kLastYear = 2261;  // whose nanoseconds fit
  const UnpackedDate date = UnpackDate(static_cast<std::uint32_t>(stamp >> 32));
  const UnpackedTime time = UnpackTime(static_cast<std::uint32_t>(stamp));
  if (date.year < kFirstYear || date.year > kLastYear) return std::nullopt;
  const year_month_day day(year(static_cast<int>(date.year)), month(date.month),
                           std::chrono::day(date.day));
  if (!day.ok() || time.hour > 23 || time.minute > 59 || time.second > 59 || time.ms > 999)
    return std::nullopt;
  const auto moment = sys_days(day) + hours(time.hour) + minutes(time.minute) +
                      seconds(time.second) + milliseconds(time.ms);
  return std::int64_t{moment.time_since_epoch().count()} * kMillisecond;
}

WhereStamp StampFrom(std::int64_t moment) {
  const std::int64_t ms = FloorDivided(moment, kMillisecond);
  return StampOfMs(moment % kMillisecond == 0 ? ms : ms + 1);
}

WhereStamp StampAfter(std::int64_t moment) {
  return StampOfMs(FloorDivided(moment, kMillisecond) + 1);
}

std::optional<std::int64_t> MomentOf(const WhereMoment& said, const WhereClock& clock) {
  switch (said.base) {
    case WhereMoment::Base::Utc:
      return said.nanoseconds;
    case WhereMoment::Base::Shown:
      return UtcOfShown(said.nanoseconds, clock);
    case WhereMoment::Base::End:
      break;
  }
  if (!clock.end) return std::nullopt;
  return Plus(*clock.end, said.nanoseconds);
}

std::optional<std::int64_t> MomentBehind(const WhereMoment& said, const WhereClock& clock) {
  WhereMoment behind = said;
  behind.nanoseconds = Plus(said.nanoseconds, said.span);
  return MomentOf(behind, clock);
}
