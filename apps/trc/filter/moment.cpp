#include "filter/moment.h"

#include <charconv>
#include <chrono>
#include <string>

#include "filter/trace_choice.h"
#include "import/fields/clock_text.h"
#include "import/fields/import_clock.h"
#include "records/raw_trace.h"

namespace {

constexpr std::int64_t kSecondMs = 1000, kMinuteMs = 60 * kSecondMs, kHourMs = 60 * kMinuteMs,
                       kDayMs = 24 * kHourMs;
struct Unit {
  std::string_view word;
  std::int64_t ms;
};
constexpr Unit kUnits[] = {{"ms", 1},
                           {"s", kSecondMs},
                           {"sec", kSecondMs},
                           {"second", kSecondMs},
                           {"seconds", kSecondMs},
                           {"m", kMinuteMs},
                           {"min", kMinuteMs},
                           {"minute", kMinuteMs},
                           {"minutes", kMinuteMs},
                           {"h", kHourMs},
                           {"hour", kHourMs},
                           {"hours", kHourMs},
                           {"d", kDayMs},
                           {"day", kDayMs},
                           {"days", kDayMs},
                           {"w", 7 * kDayMs},
                           {"week", 7 * kDayMs},
                           {"weeks", 7 * kDayMs}};

std::string_view WithoutBlanks(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

// "10m ago" and "10 minutes ago", as milliseconds.
std::optional<std::int64_t> ReadAgo(std::string_view text) {
  constexpr std::string_view kAgo = "ago";
  if (!text.ends_with(kAgo)) return std::nullopt;
  text = WithoutBlanks(text.substr(0, text.size() - kAgo.size()));
  std::int64_t number = 0;
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  if (error != std::errc() || number < 0) return std::nullopt;
  text = WithoutBlanks(text.substr(static_cast<std::size_t>(end - text.data())));
  std::int64_t ms = 0;
  for (const Unit& unit : kUnits)
    if (unit.word == text && !__builtin_mul_overflow(number, unit.ms, &ms)) return ms;
  return std::nullopt;
}

std::optional<std::uint64_t> KeyOf(std::int64_t ms) {
  ImportedTrace trace;
  if (!StoreMoment(ms, trace)) return std::nullopt;
  return MomentKey(trace.date, trace.time);
}

}  // namespace

std::optional<std::uint64_t> ReadMoment(std::string_view text, bool utc, std::int64_t nowMs) {
  text = WithoutBlanks(text);
  if (text == "now") return KeyOf(nowMs);
  std::int64_t then = 0;
  if (const auto ago = ReadAgo(text))
    return __builtin_sub_overflow(nowMs, *ago, &then) ? std::nullopt : KeyOf(then);
  constexpr std::size_t kDateLength = 10;
  const bool dateOnly = text.size() == kDateLength;
  const std::string whole = std::string(text) + (dateOnly ? "T00:00" : "");
  ClockTime time;
  if (ReadIsoTime(whole, time) != whole.size()) return std::nullopt;
  const ImportZone zone = utc ? ImportZone(0) : ImportZone();
  const std::int64_t clock = time.Seconds();
  const std::int64_t seconds = time.offset ? clock - *time.offset : zone.ToUtc(clock);
  return KeyOf(seconds * kSecondMs + time.ms);
}

std::int64_t MillisecondsOf(std::uint64_t momentKey) {
  const auto [year, month, day] = UnpackDate(static_cast<std::uint32_t>(momentKey >> 32));
  const auto [hour, minute, second, ms] = UnpackTime(static_cast<std::uint32_t>(momentKey));
  const std::chrono::sys_days date(std::chrono::year(static_cast<int>(year)) /
                                   static_cast<int>(month) / static_cast<int>(day));
  return std::int64_t{date.time_since_epoch().count()} * kDayMs + hour * kHourMs +
         minute * kMinuteMs + second * kSecondMs + ms;
}

std::int64_t NowMs() {
  const auto now = std::chrono::system_clock::now().time_since_epoch();
  return std::chrono::duration_cast<std::chrono::milliseconds>(now).count();
}
