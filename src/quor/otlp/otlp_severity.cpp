#include "quor/otlp/otlp_severity.h"

#include <algorithm>

#include "base/text.h"
#include "records/raw_trace.h"

namespace {

struct Level {
  std::uint32_t last;  // the highest number of its four
  std::uint16_t attributes;
  std::string_view words[3];  // in small letters; the first is the name
};

constexpr Level kLevels[] = {
    {4, kAttributeInfo | kAttributeVerbose, {"trace", "verbose", "trace"}},
    {8, kAttributeInfo | kAttributeDeveloper, {"debug", "developer", "debug"}},
    {12, kAttributeInfo, {"info", "information", "informational"}},
    {16, kAttributeWarn, {"warn", "warning", "warn"}},
    {20, kAttributeError, {"error", "err", "error"}},
    {24, kAttributeError, {"fatal", "fatal", "fatal"}},
};
constexpr const Level& kInfo = kLevels[2];
constexpr const Level& kFatal = kLevels[5];

// "WARN", "Warning" and "WARN2", which is a number of its own.
bool IsWordOf(std::string_view text, const Level& level) {
  if (text.size() > 1 && text.back() >= '2' && text.back() <= '4') text.remove_suffix(1);
  return std::any_of(std::begin(level.words), std::end(level.words), [text](std::string_view word) {
    return CompareIgnoringCase(word, text) == 0;
  });
}

}  // namespace

// A fatal one is an error here, so its word is kept.
OtlpSeverity SeverityOf(std::uint32_t number, std::string_view text) {
  const Level* level = nullptr;
  for (const Level& one : kLevels) {
    const bool holds = number >= 1 && number <= 24 ? number <= one.last : IsWordOf(text, one);
    if (!level && holds) level = &one;
  }
  if (!level) return {kInfo.attributes, text};
  if (level == &kFatal) return {level->attributes, text.empty() ? "FATAL" : text};
  return {level->attributes, IsWordOf(text, *level) ? std::string_view() : text};
}
