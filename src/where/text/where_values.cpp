#include "where/text/where_values.h"

#include <charconv>
#include <chrono>
#include <cstdio>
#include <limits>

#include "base/fail_with.h"

namespace {

constexpr std::int64_t kSecond = 1'000'000'000;
constexpr std::int64_t kMinute = 60 * kSecond;
constexpr std::int64_t kDay = 24 * 60 * kMinute;
constexpr int kFirstYear = 1678, kLastYear = 2261;
constexpr const char* kDurationHint =
    "a time span is a number and its unit: 50ms, 1.5s, 2h "
    "(ns, us, ms, s, m, h, d)";
constexpr const char* kMomentHint =
    "a time is 2026-11-21T09:41:07Z, 2026-11-21T09:41, 2026-11-21 "
    "or end - 5m";

__extension__ typedef __int128 Wide;

struct Unit {
  std::string_view word;
  std::int64_t nanoseconds;
};
// The smallest first.
constexpr Unit kUnits[] = {{"ns", 1},      {"us", 1000},        {"ms", 1'000'000}, {"s", kSecond},
                           {"m", kMinute}, {"h", 60 * kMinute}, {"d", kDay}};

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

std::size_t Digits(std::string_view text) {
  std::size_t count = 0;
  while (count < text.size() && IsDigit(text[count])) ++count;
  return count;
}

// Takes exactly `digits` digits from the beginning.
bool TakeDigits(std::string_view& text, std::size_t digits, int& value) {
  if (Digits(text.substr(0, digits)) != digits) return false;
  value = 0;
  for (std::size_t i = 0; i < digits; ++i) value = value * 10 + (text[i] - '0');
  text.remove_prefix(digits);
  return true;
}

bool TakeChar(std::string_view& text, char c) {
  if (text.empty() || text.front() != c) return false;
  text.remove_prefix(1);
  return true;
}

// "1.5" as thousandths and so on: digits without the point, and what they are parts of.
bool TakeDecimal(std::string_view& text, Wide& digits, Wide& parts) {
  constexpr std::size_t kDigitsMax = 19;
  digits = 0;
  parts = 1;
  const std::size_t whole = Digits(text);
  if (whole == 0 || whole > kDigitsMax) return false;
  for (std::size_t i = 0; i < whole; ++i) digits = digits * 10 + (text[i] - '0');
  text.remove_prefix(whole);
  if (text.empty() || text.front() != '.') return true;
  const std::size_t behind = Digits(text.substr(1));
  if (behind == 0 || whole + behind > kDigitsMax) return false;
  for (std::size_t i = 1; i <= behind; ++i, parts *= 10) digits = digits * 10 + (text[i] - '0');
  text.remove_prefix(behind + 1);
  return true;
}

bool TakeDate(std::string_view& text, std::int64_t& days) {
  int year = 0, month = 0, day = 0;
  if (!TakeDigits(text, 4, year) || !TakeChar(text, '-') || !TakeDigits(text, 2, month) ||
      !TakeChar(text, '-') || !TakeDigits(text, 2, day))
    return false;
  const std::chrono::year_month_day date{std::chrono::year(year),
                                         std::chrono::month(static_cast<unsigned>(month)),
                                         std::chrono::day(static_cast<unsigned>(day))};
  if (!date.ok() || year < kFirstYear || year > kLastYear) return false;
  days = std::chrono::sys_days(date).time_since_epoch().count();
  return true;
}

// ".123" as nanoseconds, and the length of its last digit.
bool TakeFraction(std::string_view& text, std::int64_t& nanoseconds, std::int64_t& span) {
  const std::size_t digits = Digits(text);
  if (digits == 0 || digits > 9) return false;
  for (std::size_t i = 0; i < digits; ++i) {
    span /= 10;
    nanoseconds += (text[i] - '0') * span;
  }
  text.remove_prefix(digits);
  return true;
}

// "09:41", "09:41:07", "09:41:07.123".
bool TakeTimeOfDay(std::string_view& text, std::int64_t& nanoseconds, std::int64_t& span) {
  int hour = 0, minute = 0, second = 0;
  if (!TakeDigits(text, 2, hour) || !TakeChar(text, ':') || !TakeDigits(text, 2, minute))
    return false;
  span = kMinute;
  if (TakeChar(text, ':')) {
    if (!TakeDigits(text, 2, second)) return false;
    span = kSecond;
  }
  nanoseconds = (hour * 60 + minute) * kMinute + second * kSecond;
  if (span == kSecond && TakeChar(text, '.') && !TakeFraction(text, nanoseconds, span))
    return false;
  return hour < 24 && minute < 60 && second < 60;
}

// "Z", "+01:00", "+0100", "+01": nanoseconds east of Greenwich.
bool TakeZone(std::string_view& text, std::int64_t& east) {
  east = 0;
  if (TakeChar(text, 'Z') || TakeChar(text, 'z')) return true;
  const bool west = !text.empty() && text.front() == '-';
  int hours = 0, minutes = 0;
  if (!west && (text.empty() || text.front() != '+')) return false;
  text.remove_prefix(1);
  if (!TakeDigits(text, 2, hours)) return false;
  const bool colon = TakeChar(text, ':');
  if ((colon || !text.empty()) && !TakeDigits(text, 2, minutes)) return false;
  east = (hours * 60 + minutes) * kMinute * (west ? -1 : 1);
  return hours <= 18 && minutes < 60;
}

std::int64_t FloorDivided(std::int64_t number, std::int64_t by) {
  return number / by - (number % by < 0 ? 1 : 0);
}

std::string AbsoluteText(const WhereMoment& moment) {
  const std::int64_t days = FloorDivided(moment.nanoseconds, kDay);
  // Not by a product: the first day that 64 bits reach is not whole.
  const std::int64_t inDay = (moment.nanoseconds % kDay + kDay) % kDay;
  const std::chrono::year_month_day date{std::chrono::sys_days(std::chrono::days(days))};
  char text[80];
  int count = std::snprintf(text, sizeof text, "%04d-%02u-%02u", static_cast<int>(date.year()),
                            static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()));
  const auto add = [&](const char* form, auto... values) {
    const auto used = static_cast<std::size_t>(count);
    count += std::snprintf(text + used, sizeof text - used, form, values...);
  };
  const bool shown = moment.base == WhereMoment::Base::Shown;
  if (moment.span >= kDay && shown) return text;
  add("T%02d:%02d", static_cast<int>(inDay / kMinute / 60), static_cast<int>(inDay / kMinute % 60));
  if (moment.span < kMinute) add(":%02d", static_cast<int>(inDay % kMinute / kSecond));
  std::string fraction;
  if (moment.span < kSecond) {
    fraction = std::to_string(kSecond + inDay % kSecond);  // with its zeros
    fraction.front() = '.';
    for (std::int64_t span = 1; span < moment.span; span *= 10) fraction.pop_back();
  }
  return text + fraction + (shown ? "" : "Z");
}

}  // namespace

std::optional<std::uint64_t> ReadWhereNumber(std::string_view word) {
  const bool hex = word.size() > 2 && word[0] == '0' && (word[1] == 'x' || word[1] == 'X');
  if (hex) word.remove_prefix(2);
  std::uint64_t number = 0;
  const auto read = std::from_chars(word.data(), word.data() + word.size(), number, hex ? 16 : 10);
  if (word.empty() || read.ec != std::errc() || read.ptr != word.data() + word.size())
    return std::nullopt;
  return number;
}

std::optional<WhereRange> ReadWhereRange(std::string_view word) {
  const std::size_t dots = word.find("..");
  if (dots == word.npos) return std::nullopt;
  const auto from = ReadWhereNumber(word.substr(0, dots));
  const auto to = ReadWhereNumber(word.substr(dots + 2));
  if (!from || !to) return std::nullopt;
  return WhereRange{*from, *to};
}

std::optional<std::int64_t> ReadWhereDuration(std::string_view word, std::string* why) {
  const auto none = [&](std::string reason) {
    return FailWith(why, std::move(reason), std::optional<std::int64_t>());
  };
  const bool negative = !word.empty() && word.front() == '-';
  if (negative || (!word.empty() && word.front() == '+')) word.remove_prefix(1);
  Wide digits = 0, parts = 1;
  if (!TakeDecimal(word, digits, parts)) return none(kDurationHint);
  for (const Unit& unit : kUnits) {
    if (word != unit.word) continue;
    const Wide scaled = digits * unit.nanoseconds;
    if (scaled % parts != 0) return none("a time span has whole nanoseconds");
    if (scaled / parts > std::numeric_limits<std::int64_t>::max())
      return none("a time span has 292 years at most");
    const auto span = static_cast<std::int64_t>(scaled / parts);
    return negative ? -span : span;
  }
  return none(kDurationHint);
}

std::string DurationText(std::int64_t nanoseconds) {
  const Unit* largest = &kUnits[3];  // 0 is "0s"
  if (nanoseconds != 0)
    for (const Unit& unit : kUnits)
      if (nanoseconds % unit.nanoseconds == 0) largest = &unit;
  return std::to_string(nanoseconds / largest->nanoseconds).append(largest->word);
}

std::optional<WhereMoment> ReadWhereMoment(std::string_view text, std::string* why) {
  const auto none = [&] { return FailWith(why, kMomentHint, std::optional<WhereMoment>()); };
  WhereMoment moment{WhereMoment::Base::Shown, 0, kDay};
  std::int64_t days = 0, inDay = 0, east = 0;
  if (!TakeDate(text, days)) return none();
  if (!text.empty()) {
    if (!TakeChar(text, 'T') && !TakeChar(text, 't') && !TakeChar(text, ' ')) return none();
    if (!TakeTimeOfDay(text, inDay, moment.span)) return none();
    if (!text.empty()) {
      if (!TakeZone(text, east) || !text.empty()) return none();
      moment.base = WhereMoment::Base::Utc;
    }
  }
  moment.nanoseconds = days * kDay + inDay - east;
  return moment;
}

std::string MomentText(const WhereMoment& moment) {
  if (moment.base != WhereMoment::Base::End) return AbsoluteText(moment);
  if (moment.nanoseconds == 0) return "end";
  const std::string offset = DurationText(moment.nanoseconds);
  return offset.front() == '-' ? "end - " + offset.substr(1) : "end + " + offset;
}
