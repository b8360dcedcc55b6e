#include "config/pages/sink_options.h"

#include <cstdlib>
#include <cstring>

#include "base/quor_str.h"

std::string SinkOptionText(const SinkPageOptions& options) {
  return "flush=" + QuorStr::NumToStr(options.flush) +
         ";maxfiles=" + QuorStr::NumToStr(options.maxFiles) +
         ";maxsize=" + QuorStr::NumToStr(options.maxSize) + ";";
}

std::optional<unsigned> SinkOptionNumber(const std::string& text, const char* key) {
  const std::size_t at = text.find(key);
  if (at == std::string::npos) return std::nullopt;
  return static_cast<unsigned>(std::strtol(text.c_str() + at + std::strlen(key), nullptr, 10));
}

std::optional<unsigned> FieldNumber(const std::string& digits) {
  std::uint32_t number = 0;
  for (const char digit : digits) {
    if (digit < '0' || digit > '9') return std::nullopt;
    number = number * 10 + static_cast<std::uint32_t>(digit - '0');
  }
  return number;
}
