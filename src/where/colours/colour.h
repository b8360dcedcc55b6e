// A colour, and how well two of them can be told apart.
//
// Shape    sRGB, eight bits a channel. Written as "#rrggbb".
// Threads  Pure.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

struct Colour {
  std::uint8_t red = 0, green = 0, blue = 0;
  bool operator==(const Colour&) const = default;
};

// Capitals do not matter. Nothing: it is not written so.
std::optional<Colour> ColourOf(std::string_view text);
// In small letters.
std::string ColourText(Colour colour);

// The relative luminance of WCAG 2: 0 is black, 1 is white.
double Luminance(Colour colour);
// The contrast ratio of WCAG 2: from 1, the same luminance, to 21, black and white.
double Contrast(Colour a, Colour b);
// What WCAG 2 demands of text (level AA).
constexpr double kLeastContrast = 4.5;
