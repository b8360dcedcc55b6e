#include "shell/goto/go_to_text.h"

#include <algorithm>
#include <cmath>

#include "base/fail_with.h"
#include "base/text.h"
#include "records/zone_offset.h"
#include "where/text/where_values.h"

namespace {

using Moment = std::optional<std::int64_t>;

constexpr const char* kTimeHint =
    "A time is 2026-11-21 09:41:07.123, 09:41:07, +5s, -1m or end - 5m.";
constexpr const char* kRowHint = "A row is a number such as 4711, 50%, or -1 for the last one.";
constexpr std::int64_t kSecondNs = 1'000'000'000, kDayNs = 86'400 * kSecondNs;

std::string WithoutBlanks(std::string_view text) {
  std::string kept;
  std::ranges::copy_if(text, std::back_inserter(kept), [](char c) { return c != ' '; });
  return kept;
}

std::string_view Trimmed(std::string_view text) {
  while (text.starts_with(' ')) text.remove_prefix(1);
  while (text.ends_with(' ')) text.remove_suffix(1);
  return text;
}

bool IsSign(char c) {
  return c == '+' || c == '-';
}

Moment Plus(std::int64_t moment, std::int64_t span, std::string* why) {
  std::int64_t sum = 0;
  if (__builtin_add_overflow(moment, span, &sum))
    return FailWith(why, "This is too far away.", Moment());
  return sum;
}

// "+5s", "- 5m", from a moment.
Moment ReadOffset(std::string_view text, Moment from, const char* noMoment, std::string* why) {
  std::string reason;
  const auto span = ReadWhereDuration(WithoutBlanks(text), &reason);
  if (!span) {
    reason.front() = 'A';
    return FailWith(why, reason + ".", Moment());
  }
  if (!from) return FailWith(why, noMoment, Moment());
  return Plus(*from, *span, why);
}

// "9:41", "09:41:07.5".
bool IsTimeOfDay(std::string_view text) {
  const std::size_t colon = text.find(':');
  return colon == 1 || colon == 2;
}

std::string OnDayOf(std::string_view timeOfDay, const GoToClock& clock) {
  const std::int64_t utc = *clock.day;
  const std::int64_t offset = clock.where.utc ? 0 : ZoneOffsetSeconds(utc / kSecondNs);
  const std::string date = MomentText({WhereMoment::Base::Shown, utc + offset * kSecondNs, kDayNs});
  return date + (timeOfDay.find(':') == 1 ? "T0" : "T") + std::string(timeOfDay);
}

std::string RangeText(int rows) {
  if (rows == 1) return "There is one row, 1.";
  const std::string last = GroupDigits(static_cast<std::uint64_t>(rows));
  return "The rows are 1 to " + last + ", from the end -1 to -" + last + ".";
}

std::optional<int> ReadPercent(std::string_view text, int rows, std::string* why) {
  const std::size_t point = text.find('.');
  const std::string_view whole = text.substr(0, point);
  const std::string_view part = point == text.npos ? std::string_view() : text.substr(point + 1);
  const auto isDigits = [](std::string_view digits) {
    return std::ranges::all_of(digits, [](char c) { return c >= '0' && c <= '9'; });
  };
  if (whole.empty() || whole.size() > 3 || part.size() > 6 || !isDigits(whole) || !isDigits(part) ||
      (point != text.npos && part.empty()))
    return FailWith(why, kRowHint, std::optional<int>());
  double percent = 0, scale = 1;
  for (const char c : whole) percent = percent * 10 + (c - '0');
  for (const char c : part) percent += (c - '0') * (scale /= 10);
  if (percent > 100) return FailWith(why, "100% is the last row.", std::optional<int>());
  return static_cast<int>(std::lround((rows - 1) * percent / 100));
}

}  // namespace

std::optional<std::int64_t> ReadGoToTime(std::string_view text, const GoToClock& clock,
                                         std::string* why) {
  text = Trimmed(text);
  const auto none = [&] { return FailWith(why, kTimeHint, Moment()); };
  if (text.empty()) return none();
  if (IsSign(text.front()))
    return ReadOffset(text, clock.focused, "+ and - count from the row with the focus.", why);
  constexpr std::string_view kEnd = "end";
  if (CompareIgnoringCase(std::string(text.substr(0, kEnd.size())), std::string(kEnd)) == 0) {
    const std::string_view rest = Trimmed(text.substr(kEnd.size()));
    constexpr const char* kNoEnd = "There is no trace with a time.";
    if (rest.empty()) return clock.where.end ? clock.where.end : FailWith(why, kNoEnd, Moment());
    return IsSign(rest.front()) ? ReadOffset(rest, clock.where.end, kNoEnd, why) : none();
  }
  if (IsTimeOfDay(text) && !clock.day) return none();
  const auto moment = ReadWhereMoment(IsTimeOfDay(text) ? OnDayOf(text, clock) : std::string(text));
  return moment ? MomentOf(*moment, clock.where) : none();
}

std::optional<int> ReadGoToRow(std::string_view text, int rows, std::string* why) {
  const auto none = [&](std::string reason) {
    return FailWith(why, std::move(reason), std::optional<int>());
  };
  std::string word = WithoutBlanks(text);
  std::erase(word, ',');
  if (rows == 0) return none("There are no rows.");
  if (word.ends_with('%'))
    return ReadPercent(std::string_view(word).substr(0, word.size() - 1), rows, why);
  const bool fromEnd = word.starts_with('-');
  const std::string_view digits = std::string_view(word).substr(fromEnd ? 1 : 0);
  const bool isNumber = !digits.empty() && digits.find_first_not_of("0123456789") == digits.npos;
  if (!isNumber) return none(kRowHint);
  const auto number = ReadWhereNumber(digits);
  if (!number || *number == 0 || *number > static_cast<std::uint64_t>(rows))
    return none(RangeText(rows));
  const int row = static_cast<int>(*number);
  return fromEnd ? rows - row : row - 1;
}
