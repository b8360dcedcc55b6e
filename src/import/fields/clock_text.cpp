#include "import/fields/clock_text.h"

#include <time.h>

#include <algorithm>
#include <charconv>
#include <chrono>
#include <cmath>
#include <cstring>
#include <string>

#include "base/text.h"
#include "import/fields/import_zone.h"

namespace {

constexpr std::string_view kMonths = "JanFebMarAprMayJunJulAugSepOctNovDec";
constexpr int kLeapSecond = 60;

// Reads a text from its beginning.
class Scan {
 public:
  explicit Scan(std::string_view text) : m_text(text) {}

  std::size_t At() const { return m_at; }
  std::string_view Rest() const { return m_text.substr(m_at); }
  char Here() const { return m_at < m_text.size() ? m_text[m_at] : '\0'; }
  bool IsDigit() const { return Here() >= '0' && Here() <= '9'; }
  void Skip(std::size_t count = 1) { m_at += count; }
  bool Take(char wanted) {
    if (Here() != wanted || m_at == m_text.size()) return false;
    ++m_at;
    return true;
  }
  bool TakeOneOf(std::string_view wanted) {
    if (m_at == m_text.size() || wanted.find(Here()) == std::string_view::npos) return false;
    ++m_at;
    return true;
  }
  bool Number(int digits, int& number) {
    number = 0;
    for (int i = 0; i < digits; ++i, ++m_at) {
      if (!IsDigit()) return false;
      number = number * 10 + (Here() - '0');
    }
    return true;
  }
  bool Month(int& month) {
    const std::string_view name = Rest().substr(0, 3);
    for (std::size_t at = 0; at < kMonths.size(); at += 3) {
      if (CompareIgnoringCase(kMonths.substr(at, 3), name) != 0) continue;
      month = static_cast<int>(at / 3) + 1;
      m_at += 3;
      return true;
    }
    return false;
  }
  // The digits of a fraction, of which three count.
  int Fraction() {
    int ms = 0;
    for (int unit = 100; IsDigit(); unit /= 10, ++m_at) ms += (Here() - '0') * unit;
    return ms;
  }

 private:
  std::string_view m_text;
  std::size_t m_at = 0;
};

bool IsRight(const ClockTime& time) {
  constexpr int kDays[] = {31, 29, 31, 30, 31, 30, 31, 31, 30, 31, 30, 31};
  const bool month = time.month >= 1 && time.month <= 12;
  if (!month || time.day < 1 || time.day > kDays[time.month - 1]) return false;
  if (time.hour > 23 || time.minute > 59 || time.second > kLeapSecond) return false;
  const std::chrono::year_month_day date(std::chrono::year(time.year),
                                         std::chrono::month(static_cast<unsigned>(time.month)),
                                         std::chrono::day(static_cast<unsigned>(time.day)));
  return time.year == 0 || date.ok();
}

// "09:41", "09:41:07", "09:41:07.123".
bool TimeOfDay(Scan& scan, ClockTime& time, bool needsSeconds) {
  if (!scan.Number(2, time.hour) || !scan.Take(':') || !scan.Number(2, time.minute)) return false;
  time.second = time.ms = 0;
  if (scan.Here() != ':') return !needsSeconds;
  scan.Skip();
  if (!scan.Number(2, time.second)) return false;
  const std::string_view rest = scan.Rest();
  if (rest.size() > 1 && (rest[0] == '.' || rest[0] == ',') && rest[1] >= '0' && rest[1] <= '9') {
    scan.Skip();
    time.ms = scan.Fraction();
  }
  return true;
}

// The zone behind a time of day, if there is one.
void Zone(Scan& scan, ClockTime& time) {
  time.offset.reset();
  std::string_view rest = scan.Rest();
  const std::size_t blank = rest.starts_with(' ') ? 1 : 0;
  rest.remove_prefix(blank);
  for (const std::size_t length : {6, 5, 3, 1}) {
    if (rest.size() < length) continue;
    const bool ends =
        rest.size() == length || !std::isalnum(static_cast<unsigned char>(rest[length]));
    const auto offset = ends ? ReadOffset(rest.substr(0, length)) : std::nullopt;
    if (!offset || (length == 1 && blank != 0)) continue;
    time.offset = offset;
    scan.Skip(blank + length);
    return;
  }
}

// Where the first "%f" stands, and not behind a "%" that is one itself.
std::size_t FindFraction(const std::string& format) {
  for (std::size_t at = 0; at + 1 < format.size(); ++at) {
    if (format[at] != '%') continue;
    if (format[at + 1] == 'f') return at;
    ++at;
  }
  return std::string::npos;
}

// Takes the digits of a fraction out of the text, and its "%f" out of the format: strptime must
// read the rest in one go, because it keeps what it knows of "%I" for a "%p" that comes later.
bool TakeFraction(std::string& text, std::string& format, int& ms) {
  const std::size_t at = FindFraction(format);
  if (at == std::string::npos) return true;
  struct tm before = {};
  const char* const end = strptime(text.c_str(), format.substr(0, at).c_str(), &before);
  if (!end) return false;
  const auto begin = static_cast<std::size_t>(end - text.c_str());
  Scan digits(std::string_view(text).substr(begin));
  if (!digits.IsDigit()) return false;
  ms = digits.Fraction();
  text.erase(begin, digits.At());
  format.erase(at, 2);
  return true;
}

}  // namespace

std::int64_t ClockTime::Seconds() const {
  using namespace std::chrono;
  const sys_days date(std::chrono::year(year) / static_cast<int>(month) / static_cast<int>(day));
  return std::int64_t{date.time_since_epoch().count()} * 86400 + hour * 3600 + minute * 60 + second;
}

std::size_t ReadIsoTime(std::string_view text, ClockTime& time) {
  Scan scan(text);
  const bool date = scan.Number(4, time.year) && scan.TakeOneOf("-/") &&
                    scan.Number(2, time.month) && scan.TakeOneOf("-/") && scan.Number(2, time.day);
  if (!date || time.year == 0 || !scan.TakeOneOf("Tt _") || !TimeOfDay(scan, time, false)) return 0;
  Zone(scan, time);
  return IsRight(time) ? scan.At() : 0;
}

std::size_t ReadSyslogTime(std::string_view text, ClockTime& time) {
  Scan scan(text);
  time.year = 0;
  time.offset.reset();
  if (!scan.Month(time.month) || !scan.Take(' ')) return 0;
  const bool padded = scan.Take(' ');
  if (!scan.Number(padded ? 1 : 2, time.day) || !scan.Take(' ')) return 0;
  const std::string_view rest = scan.Rest();
  if (rest.size() > 4 && rest[4] == ' ' && (!scan.Number(4, time.year) || !scan.Take(' ')))
    return 0;
  if (!TimeOfDay(scan, time, true)) return 0;
  return IsRight(time) ? scan.At() : 0;
}

std::size_t ReadWebTime(std::string_view text, ClockTime& time) {
  Scan scan(text);
  const bool date = scan.Number(2, time.day) && scan.Take('/') && scan.Month(time.month) &&
                    scan.Take('/') && scan.Number(4, time.year) && scan.Take(':');
  if (!date || time.year == 0 || !TimeOfDay(scan, time, true)) return 0;
  Zone(scan, time);
  return IsRight(time) ? scan.At() : 0;
}

std::optional<std::int64_t> ReadEpoch(std::string_view text) {
  constexpr double kMsMin = 1e11, kUsMin = 1e14, kNsMin = 1e17;
  const char* const end = text.data() + text.size();
  std::int64_t whole = 0;
  const auto read = std::from_chars(text.data(), end, whole);
  if (read.ec != std::errc() || whole < 0) return std::nullopt;
  Scan rest(std::string_view(read.ptr, static_cast<std::size_t>(end - read.ptr)));
  const int ms = rest.Take('.') ? rest.Fraction() : 0;
  if (!rest.Rest().empty()) {  // "1.7e9"
    double number = 0;
    const auto again = std::from_chars(text.data(), end, number);
    const bool good = again.ec == std::errc() && again.ptr == end && number >= 0;
    if (!good || !(number < kMsMin)) return std::nullopt;
    return static_cast<std::int64_t>(number * 1000);
  }
  const auto number = static_cast<double>(whole);
  if (number < kMsMin) return whole * 1000 + ms;
  if (number < kUsMin) return whole;
  return number < kNsMin ? whole / 1000 : whole / 1'000'000;
}

bool ReadFormattedTime(std::string text, std::string format, ClockTime& time) {
  constexpr long kNoZone = std::numeric_limits<long>::min();
  struct tm tm = {};
  tm.tm_mday = 1;
  tm.tm_year = -1900;
  tm.tm_gmtoff = kNoZone;
  time.ms = 0;
  if (!TakeFraction(text, format, time.ms)) return false;
  const char* const end = strptime(text.c_str(), format.c_str(), &tm);
  if (!end || *end != '\0') return false;
  time.year = tm.tm_year + 1900;
  time.month = tm.tm_mon + 1;
  time.day = tm.tm_mday;
  time.hour = tm.tm_hour;
  time.minute = tm.tm_min;
  time.second = tm.tm_sec;
  time.offset.reset();
  if (tm.tm_gmtoff != kNoZone) time.offset = static_cast<int>(tm.tm_gmtoff);
  return time.year >= 0 && IsRight(time);
}
