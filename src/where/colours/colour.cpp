#include "where/colours/colour.h"

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>

namespace {

constexpr std::size_t kDigits = 6;

double Linear(std::uint8_t channel) {
  const double part = channel / 255.0;
  return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
}

}  // namespace

std::optional<Colour> ColourOf(std::string_view text) {
  if (text.size() != 1 + kDigits || text.front() != '#') return std::nullopt;
  const char* const end = text.data() + text.size();
  std::uint32_t number = 0;
  // A sign is no digit: from_chars takes "-" for signed numbers only, and "+" for none.
  const auto read = std::from_chars(text.data() + 1, end, number, 16);
  if (read.ec != std::errc() || read.ptr != end) return std::nullopt;
  return Colour{static_cast<std::uint8_t>(number >> 16), static_cast<std::uint8_t>(number >> 8),
                static_cast<std::uint8_t>(number)};
}

std::string ColourText(Colour colour) {
  constexpr char kHex[] = "0123456789abcdef";
  std::string text("#");
  for (const std::uint8_t channel : {colour.red, colour.green, colour.blue}) {
    text.push_back(kHex[channel >> 4]);
    text.push_back(kHex[channel & 15]);
  }
  return text;
}

double Luminance(Colour colour) {
  return 0.2126 * Linear(colour.red) + 0.7152 * Linear(colour.green) + 0.0722 * Linear(colour.blue);
}

double Contrast(Colour a, Colour b) {
  const auto [darker, lighter] = std::minmax({Luminance(a), Luminance(b)});
  return (lighter + 0.05) / (darker + 0.05);
}
