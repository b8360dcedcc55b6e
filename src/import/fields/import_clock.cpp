#include "import/fields/import_clock.h"

#include <chrono>

namespace {

constexpr int kYearMax = 9999;
constexpr std::int64_t kDaySeconds = 86400;

std::string_view WithoutBlanks(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

int YearOf(std::int64_t seconds) {
  using namespace std::chrono;
  const year_month_day date(floor<days>(sys_seconds(std::chrono::seconds(seconds))));
  return static_cast<int>(date.year());
}

}  // namespace

bool StoreMoment(std::int64_t ms, ImportedTrace& trace) {
  using namespace std::chrono;
  constexpr std::int64_t kFirst = sys_days(year(1) / 1 / 1).time_since_epoch().count();
  constexpr std::int64_t kBehind = sys_days(year(kYearMax + 1) / 1 / 1).time_since_epoch().count();
  constexpr std::int64_t kDayMs = kDaySeconds * 1000;
  if (ms < kFirst * kDayMs || ms >= kBehind * kDayMs) return false;
  const sys_days day = floor<days>(sys_time<milliseconds>(milliseconds(ms)));
  const year_month_day date(day);
  const auto ofDay = static_cast<unsigned>(ms - day.time_since_epoch().count() * kDayMs);
  trace.date = PackDate(static_cast<unsigned>(static_cast<int>(date.year())),
                        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  trace.time = PackTime(ofDay / 3'600'000, ofDay / 60'000 % 60, ofDay / 1000 % 60, ofDay % 1000);
  trace.hasTime = true;
  return true;
}

bool ImportClock::Read(std::string_view text, ImportedTrace& trace) {
  ClockTime time;
  if (!m_rules.format.empty())
    return text.find('\0') == text.npos &&
           ReadFormattedTime(std::string(text), m_rules.format, time) && Store(time, trace);
  text = WithoutBlanks(text);
  if (const auto ms = ReadEpoch(text)) return StoreMoment(*ms, trace);
  for (const auto read : {ReadIsoTime, ReadSyslogTime, ReadWebTime})
    if (const std::size_t length = read(text, time); length > 0)
      return length == text.size() && Store(time, trace);
  return false;
}

std::size_t ImportClock::ReadBeginning(std::string_view text, ImportedTrace& trace) {
  ClockTime time;
  for (const auto read : {ReadSyslogTime, ReadIsoTime})
    if (const std::size_t length = read(text, time); length > 0)
      return Store(time, trace) ? length : 0;
  return 0;
}

bool ImportClock::Store(ClockTime time, ImportedTrace& trace) {
  if (time.year == 0) {
    if (!AddYear(time)) return false;
    ++m_yearsAdded;
  }
  const std::int64_t clock = time.Seconds();
  const std::int64_t utc = time.offset ? clock - *time.offset : m_rules.zone.ToUtc(clock);
  return StoreMoment(utc * 1000 + time.ms, trace);
}

// The 29th of February may be eight years ago.
bool ImportClock::AddYear(ClockTime& time) const {
  constexpr int kYears = 9;
  const std::int64_t latest = m_latest + kDaySeconds;
  const int last = YearOf(latest) + 1;  // in the zone it may be next year
  for (int year = last; year > last - kYears; --year) {
    const std::chrono::year_month_day date(std::chrono::year(year),
                                           std::chrono::month(static_cast<unsigned>(time.month)),
                                           std::chrono::day(static_cast<unsigned>(time.day)));
    time.year = year;
    if (date.ok() && m_rules.zone.ToUtc(time.Seconds()) <= latest) return true;
  }
  return false;
}
