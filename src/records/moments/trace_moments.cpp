#include "records/moments/trace_moments.h"

#include <algorithm>
#include <chrono>
#include <cstdio>
#include <cstdlib>

#include "records/zone_offset.h"

namespace {

constexpr std::int64_t kMillisecondNs = 1'000'000;
constexpr std::uint64_t kNanosecondPs = 1000;
// A process whose moments change more often than every so many traces has none.
constexpr std::uint64_t kSpansFree = 16, kTracesPerSpan = 64;

bool IsMomentOf(const UnpackedDate& date, const UnpackedTime& time) {
  const std::chrono::year_month_day day(std::chrono::year(static_cast<int>(date.year)),
                                        std::chrono::month(date.month), std::chrono::day(date.day));
  return date.year >= 1 && date.year <= 9999 && day.ok() && time.hour <= 23 && time.minute <= 59 &&
         time.second <= 59 && time.ms <= 999;
}

std::int64_t SecondsOf(const UnpackedDate& date, const UnpackedTime& time) {
  const std::chrono::sys_days day(
      std::chrono::year_month_day(std::chrono::year(static_cast<int>(date.year)),
                                  std::chrono::month(date.month), std::chrono::day(date.day)));
  return std::int64_t{day.time_since_epoch().count()} * 86400 + time.hour * 3600 +
         time.minute * 60 + time.second;
}

std::uint32_t ProcessOf(const TraceEvent_i& trace) {
  return std::uint32_t{trace.GetMachineId()} << 16 | trace.GetPidId();
}

std::int64_t NanosecondsOf(std::uint64_t tic) {
  return static_cast<std::int64_t>(tic / kNanosecondPs);
}

void AppendDigits(std::string& to, std::uint64_t number, unsigned digits) {
  char text[24];
  std::snprintf(text, sizeof text, "%0*llu", static_cast<int>(digits),
                static_cast<unsigned long long>(number));
  to += text;
}

}  // namespace

// Nanoseconds since 1970 have room for the years around 1700 to 2260.
bool TraceMoments::HasTic(const TraceEvent_i& trace, std::int64_t& ms) {
  constexpr unsigned kFirstYear = 1700, kLastYear = 2250;
  if (trace.GetTicCount() == 0) return false;
  const UnpackedDate date = UnpackDate(trace.GetDate());
  const UnpackedTime time = UnpackTime(trace.GetTime());
  if (date.year < kFirstYear || date.year > kLastYear || !IsMomentOf(date, time)) return false;
  ms = SecondsOf(date, time) * 1000 + time.ms;
  return true;
}

void TraceMoments::Learn(const TraceList_t& traces) {
  std::uint64_t place = 0;
  traces.ForEach(0, [&](const TraceEvent_i* trace) { Learn(place++, *trace); });
}

void TraceMoments::Learn(std::uint64_t place, const TraceEvent_i& trace) {
  std::int64_t ms = 0;
  if (!HasTic(trace, ms)) return;
  Process& process = m_processes[ProcessOf(trace)];
  ++process.traces;
  if (!process.agrees) return;
  const std::int64_t least = ms * kMillisecondNs - NanosecondsOf(trace.GetTicCount());
  const std::int64_t most = least + kMillisecondNs - 1;
  if (!process.spans.empty()) {
    Span& last = process.spans.back();
    if (least <= last.most && most >= last.least) {
      last.least = std::max(last.least, least);
      last.most = std::min(last.most, most);
      return;
    }
  }
  process.spans.push_back({place, least, most});
  process.agrees = process.spans.size() <= kSpansFree + process.traces / kTracesPerSpan;
}

void TraceMoments::UseUtc(bool utc) {
  if (m_utc == utc) return;
  m_utc = utc;
  m_second = ~std::uint64_t{0};
}

std::optional<unsigned> TraceMoments::MicrosecondsOf(std::uint64_t place,
                                                     const TraceEvent_i& trace) const {
  std::int64_t ms = 0;
  if (!HasTic(trace, ms)) return std::nullopt;
  const auto process = m_processes.find(ProcessOf(trace));
  if (process == m_processes.end() || !process->second.agrees) return std::nullopt;
  const std::vector<Span>& spans = process->second.spans;
  const auto behind =
      std::upper_bound(spans.begin(), spans.end(), place,
                       [](std::uint64_t sought, const Span& span) { return sought < span.from; });
  if (behind == spans.begin()) return std::nullopt;
  const std::int64_t moment = std::prev(behind)->least + NanosecondsOf(trace.GetTicCount());
  const std::int64_t part = moment - ms * kMillisecondNs;
  return static_cast<unsigned>(std::clamp<std::int64_t>(part, 0, kMillisecondNs - 1) / 1000);
}

// The parts before and behind the fraction.
bool TraceMoments::MakeSecond(const TraceEvent_i& trace) {
  UnpackedDate date = UnpackDate(trace.GetDate());
  const UnpackedTime time = UnpackTime(trace.GetTime());
  if (!IsMomentOf(date, {time.hour, time.minute, time.second, 0})) return false;
  const std::int64_t utc = SecondsOf(date, time);
  const int offset = m_utc ? 0 : ZoneOffsetSeconds(utc);
  const std::chrono::sys_seconds moment{std::chrono::seconds(utc + offset)};
  const auto day = std::chrono::floor<std::chrono::days>(moment);
  const std::chrono::year_month_day local(day);
  const auto year = static_cast<int>(local.year());
  if (year < 1 || year > 9999) return false;
  const auto ofDay = static_cast<std::uint64_t>((moment - day).count());
  m_before.clear();
  AppendDigits(m_before, static_cast<std::uint64_t>(year), 4);
  AppendDigits(m_before += '-', static_cast<unsigned>(local.month()), 2);
  AppendDigits(m_before += '-', static_cast<unsigned>(local.day()), 2);
  AppendDigits(m_before += 'T', ofDay / 3600, 2);
  AppendDigits(m_before += ':', ofDay / 60 % 60, 2);
  AppendDigits(m_before += ':', ofDay % 60, 2);
  m_before += '.';
  m_zone = "Z";
  if (m_utc) return true;
  const auto minutes = static_cast<std::uint64_t>(std::abs(offset)) / 60;
  AppendDigits(m_zone = offset < 0 ? "-" : "+", minutes / 60, 2);
  AppendDigits(m_zone += ':', minutes % 60, 2);
  return true;
}

bool TraceMoments::Append(std::string& to, std::uint64_t place, const TraceEvent_i& trace) {
  return Append(to, trace, MicrosecondsOf(place, trace), true);
}

bool TraceMoments::AppendKnown(std::string& to, std::optional<std::uint64_t> place,
                               const TraceEvent_i& trace) {
  return Append(to, trace, place ? MicrosecondsOf(*place, trace) : std::nullopt, false);
}

bool TraceMoments::Append(std::string& to, const TraceEvent_i& trace,
                          std::optional<unsigned> microseconds, bool allDigits) {
  constexpr unsigned kMillisecondBits = 11;
  const std::uint64_t second =
      std::uint64_t{trace.GetDate()} << 32 | trace.GetTime() >> kMillisecondBits;
  if (second != m_second) {
    m_second = second;
    m_isMoment = MakeSecond(trace);
  }
  const unsigned ms = UnpackTime(trace.GetTime()).ms;
  if (!m_isMoment || ms > 999) return false;
  char digits[6];
  unsigned fraction = ms * 1000 + microseconds.value_or(0);
  for (int at = 5; at >= 0; --at, fraction /= 10)
    digits[at] = static_cast<char>('0' + fraction % 10);
  const std::size_t shown = allDigits || microseconds ? sizeof digits : 3;
  to.append(m_before).append(digits, shown).append(m_zone);
  return true;
}
