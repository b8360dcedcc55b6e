#include "import/fields/level_words.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"
#include "records/raw_trace.h"

namespace {

constexpr std::uint16_t kInfo = kAttributeInfo, kWarn = kAttributeWarn, kError = kAttributeError;
constexpr std::uint16_t kDebug = kAttributeInfo | kAttributeDeveloper;
constexpr std::uint16_t kTrace = kDebug | kAttributeVerbose;

struct LevelWord {
  std::string_view word;
  std::uint16_t attributes;
};

constexpr LevelWord kLevelWords[] = {
    {"info", kInfo},      {"error", kError},      {"warn", kWarn},
    {"warning", kWarn},   {"debug", kDebug},      {"trace", kTrace},
    {"notice", kInfo},    {"err", kError},        {"fatal", kError},
    {"critical", kError}, {"crit", kError},       {"i", kInfo},
    {"w", kWarn},         {"e", kError},          {"d", kDebug},
    {"t", kTrace},        {"v", kTrace},          {"f", kError},
    {"c", kError},        {"n", kInfo},           {"alert", kError},
    {"emerg", kError},    {"emergency", kError},  {"panic", kError},
    {"severe", kError},   {"information", kInfo}, {"informational", kInfo},
    {"dbg", kDebug},      {"verbose", kTrace},    {"fine", kDebug},
    {"finer", kTrace},    {"finest", kTrace},     {"config", kDebug},
    {"silly", kTrace},    {"dpanic", kError},     {"default", kInfo},
    {"log", kInfo},       {"success", kInfo},     {"inf", kInfo},
    {"wrn", kWarn},       {"ftl", kError},        {"trc", kTrace},
    {"vrb", kTrace}};

// The words that AttributesToLabel writes.
constexpr LevelWord kAttributeWords[] = {{"info", kAttributeInfo},
                                         {"warn", kAttributeWarn},
                                         {"error", kAttributeError},
                                         {"developer", kAttributeDeveloper},
                                         {"verbose", kAttributeVerbose}};

template <class Words>
std::optional<std::uint16_t> Find(const Words& words, std::string_view word) {
  for (const LevelWord& known : words)
    if (CompareIgnoringCase(known.word, word) == 0) return known.attributes;
  return std::nullopt;
}

std::string_view Trimmed(std::string_view text) {
  const std::size_t begin = text.find_first_not_of(" \t");
  if (begin == std::string_view::npos) return {};
  return text.substr(begin, text.find_last_not_of(" \t") + 1 - begin);
}

std::optional<std::uint16_t> FindSeveral(std::string_view words) {
  std::uint16_t attributes = 0;
  for (;;) {
    const std::size_t end = std::min(words.find_first_of(",+"), words.size());
    const auto one = Find(kAttributeWords, Trimmed(words.substr(0, end)));
    if (!one) return std::nullopt;
    attributes |= *one;
    if (end == words.size()) return attributes;
    words.remove_prefix(end + 1);
  }
}

// Of the five levels from trace to error by their upper bounds.
std::uint16_t OfBounds(double number, double trace, double debug, double info, double warn) {
  if (number < trace) return kTrace;
  if (number < debug) return kDebug;
  if (number < info) return kInfo;
  return number < warn ? kWarn : kError;
}

std::optional<std::uint16_t> OfNumber(double number, LevelNumbers numbers) {
  const bool ofSyslog = number >= 0 && number < 8;
  switch (numbers) {
    case LevelNumbers::Python:
      return OfBounds(number, 10, 20, 30, 40);
    case LevelNumbers::Otel:
      if (number < 1 || number > 24) return std::nullopt;
      return OfBounds(number, 5, 9, 13, 17);
    case LevelNumbers::Pino:
      return OfBounds(number, 20, 30, 40, 50);
    case LevelNumbers::Syslog:
      if (!ofSyslog) return std::nullopt;
      return AttributesOfSyslog(static_cast<unsigned>(number));
    default:
      if (ofSyslog) return AttributesOfSyslog(static_cast<unsigned>(number));
      if (number < 10) return std::nullopt;
      return OfBounds(number, 20, 30, 40, 50);
  }
}

}  // namespace

std::optional<std::uint16_t> AttributesOfLevel(std::string_view level, LevelNumbers numbers) {
  level = Trimmed(level);
  if (const auto known = Find(kLevelWords, level)) return known;
  double number = 0;
  const char* const end = level.data() + level.size();
  const auto read = std::from_chars(level.data(), end, number);
  if (read.ec == std::errc() && read.ptr == end && number > -1e6 && number < 1e6)
    return OfNumber(number, numbers);
  return FindSeveral(level);
}

std::uint16_t AttributesOfSyslog(unsigned severity) {
  if (severity <= 3) return kError;
  if (severity == 4) return kWarn;
  return severity <= 6 ? kInfo : kDebug;
}
