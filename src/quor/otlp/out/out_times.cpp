#include "quor/otlp/out/out_times.h"

#include <chrono>

#include "records/raw_trace.h"

namespace {

constexpr std::int64_t kNsPerMs = 1'000'000;
constexpr unsigned kFirstYear = 1970, kLastYear = 2261;

}  // namespace

std::optional<std::uint64_t> UnixNanoOf(std::uint32_t date, std::uint32_t time) {
  using namespace std::chrono;
  const UnpackedDate on = UnpackDate(date);
  const UnpackedTime at = UnpackTime(time);
  if (on.year < kFirstYear || on.year > kLastYear) return std::nullopt;
  const year_month_day day(year(static_cast<int>(on.year)), month(on.month),
                           std::chrono::day(on.day));
  if (!day.ok() || at.hour > 23 || at.minute > 59 || at.second > 59 || at.ms > 999)
    return std::nullopt;
  const auto seconds = std::int64_t{sys_days(day).time_since_epoch().count()} * 86400 +
                       at.hour * 3600 + at.minute * 60 + at.second;
  return static_cast<std::uint64_t>((seconds * 1000 + at.ms) * kNsPerMs);
}

// The moment moves no further than it must. So it soon stands still, and follows a clock that is
// set or drifts.
std::uint64_t OutClock::TimeOf(std::uint64_t ms, std::uint64_t tic) {
  if (tic == 0) return ms;
  const auto least = static_cast<std::int64_t>(ms);
  const auto since = static_cast<std::int64_t>(tic / kPsPerNs);
  if (!m_knows) {
    m_knows = true;
    m_moment = least - since;
    return ms;
  }
  // A tic count has at most 2^64 / 1000, and a time less than 2^63: neither sum overflows.
  const std::int64_t most = least + kNsPerMs - 1;
  if (m_moment < least - since) m_moment = least - since;
  if (m_moment > most - since) m_moment = most - since;
  return static_cast<std::uint64_t>(m_moment + since);
}
