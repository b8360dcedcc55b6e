#include "import/otlp/json_values.h"

#include <charconv>
#include <cmath>
#include <limits>

namespace {

int DigitOfHex(char byte) {
  if (byte >= '0' && byte <= '9') return byte - '0';
  const char small = static_cast<char>(byte | 0x20);
  return small >= 'a' && small <= 'f' ? small - 'a' + 10 : -1;
}

int DigitOfBase64(char byte) {
  if (byte >= 'A' && byte <= 'Z') return byte - 'A';
  if (byte >= 'a' && byte <= 'z') return byte - 'a' + 26;
  if (byte >= '0' && byte <= '9') return byte - '0' + 52;
  if (byte == '+' || byte == '-') return 62;
  return byte == '/' || byte == '_' ? 63 : -1;
}

template <class Number>
bool ReadExact(std::string_view text, Number& number) {
  const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
  return error == std::errc() && end == text.data() + text.size() && !text.empty();
}

template <class Number>
bool ReadWhole(std::string_view text, Number& number) {
  if (ReadExact(text, number)) return true;
  double real = 0;
  // The largest double below 2^63 and 2^64 are far enough from them.
  if (!ReadExact(text, real) || std::trunc(real) != real) return false;
  constexpr auto kLeast = static_cast<double>(std::numeric_limits<Number>::min());
  constexpr auto kMost = static_cast<double>(std::numeric_limits<Number>::max());
  if (!(real >= kLeast && real < kMost)) return false;
  number = static_cast<Number>(real);
  return true;
}

}  // namespace

bool ReadHexBytes(std::string_view text, std::string& bytes) {
  bytes.clear();
  if (text.size() % 2 != 0) return false;
  for (std::size_t at = 0; at < text.size(); at += 2) {
    const int high = DigitOfHex(text[at]), low = DigitOfHex(text[at + 1]);
    if (high < 0 || low < 0) return false;
    bytes.push_back(static_cast<char>(high * 16 + low));
  }
  return true;
}

bool ReadBase64(std::string_view text, std::string& bytes) {
  bytes.clear();
  while (text.ends_with('=')) text.remove_suffix(1);
  if (text.size() % 4 == 1) return false;
  unsigned held = 0, bits = 0;
  for (const char byte : text) {
    const int digit = DigitOfBase64(byte);
    if (digit < 0) return false;
    held = (held << 6 | static_cast<unsigned>(digit)) & 0xFFFF;
    bits += 6;
    if (bits < 8) continue;
    bits -= 8;
    bytes.push_back(static_cast<char>(held >> bits & 0xFF));
  }
  return true;
}

bool ReadSigned(std::string_view text, std::int64_t& number) {
  return ReadWhole(text, number);
}

bool ReadUnsigned(std::string_view text, std::uint64_t& number) {
  return ReadWhole(text, number);
}

bool ReadDouble(std::string_view text, double& number) {
  if (text == "NaN" || text == "Infinity" || text == "-Infinity") {
    number = text == "NaN" ? std::nan("") : text[0] == '-' ? -INFINITY : INFINITY;
    return true;
  }
  return ReadExact(text, number);
}

std::string WithCapitals(std::string_view name) {
  std::string camel;
  bool isNext = false;
  for (const char byte : name) {
    if (byte != '_') camel.push_back(isNext && byte >= 'a' && byte <= 'z' ? byte & ~0x20 : byte);
    isNext = byte == '_';
  }
  return camel;
}

bool ReadEnum(std::string_view word, std::string_view prefix, std::uint32_t& number) {
  constexpr std::string_view kSeverities[] = {"TRACE", "DEBUG", "INFO", "WARN", "ERROR", "FATAL"};
  constexpr std::string_view kKinds[] = {"UNSPECIFIED", "INTERNAL", "SERVER",
                                         "CLIENT",      "PRODUCER", "CONSUMER"};
  constexpr std::string_view kCodes[] = {"UNSET", "OK", "ERROR"};
  if (!word.starts_with(prefix)) return false;
  word.remove_prefix(prefix.size());
  const auto find = [&](const auto& words) {
    for (number = 0; number < std::size(words); ++number)
      if (words[number] == word) return true;
    return false;
  };
  if (prefix == "SPAN_KIND_") return find(kKinds);
  if (prefix == "STATUS_CODE_") return find(kCodes);
  // Each severity has four numbers: INFO, INFO2, INFO3, INFO4.
  std::uint32_t step = 0;
  if (!word.empty() && word.back() >= '2' && word.back() <= '4') {
    step = static_cast<std::uint32_t>(word.back() - '1');
    word.remove_suffix(1);
  }
  if (!find(kSeverities)) return word == "UNSPECIFIED" && (number = 0, true);
  number = number * 4 + 1 + step;
  return true;
}
