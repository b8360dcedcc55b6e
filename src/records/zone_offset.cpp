#include "records/zone_offset.h"

#include <time.h>

#include <array>
#include <atomic>

namespace {

constexpr std::int64_t kHour = 3600;
constexpr std::size_t kRemembered = 64;
// A cached hour: its number above, the offset below. The odd start value matches no hour.
constexpr std::uint64_t kNothing = ~std::uint64_t{0};

using Hours = std::array<std::atomic<std::uint64_t>, kRemembered>;

Hours& RememberedHours() {
  static Hours& hours = *[] {
    auto* made = new Hours;
    for (auto& hour : *made) hour.store(kNothing, std::memory_order_relaxed);
    tzset();
    return made;
  }();
  return hours;
}

int AskSystem(std::int64_t utcSeconds) {
  const time_t moment = utcSeconds;
  struct tm local;
  return localtime_r(&moment, &local) ? static_cast<int>(local.tm_gmtoff) : 0;
}

std::uint64_t Pack(std::int64_t hour, int offset) {
  return static_cast<std::uint64_t>(hour) << 32 | static_cast<std::uint32_t>(offset);
}

}  // namespace

int ZoneOffsetSeconds(std::int64_t utcSeconds) {
  const std::int64_t inHour = ((utcSeconds % kHour) + kHour) % kHour;
  const std::int64_t hour = (utcSeconds - inHour) / kHour;
  auto& place = RememberedHours()[static_cast<std::size_t>(hour) % kRemembered];
  const std::uint64_t remembered = place.load(std::memory_order_relaxed);
  const int offset = static_cast<int>(static_cast<std::uint32_t>(remembered));
  if (remembered != kNothing && remembered == Pack(hour, offset)) return offset;

  const int first = AskSystem(hour * kHour);
  // Some zones change in the middle of an hour of UTC: such an hour is not cached.
  if (first != AskSystem(hour * kHour + kHour - 1)) return AskSystem(utcSeconds);
  place.store(Pack(hour, first), std::memory_order_relaxed);
  return first;
}

void ForgetZone() {
  Hours& hours = RememberedHours();
  tzset();
  for (auto& hour : hours) hour.store(kNothing, std::memory_order_relaxed);
}
