// Has the user asked his desktop for high contrast? Qt has no word for it, so the palette tells.
//
// Shape    Such themes paint the grounds of windows, buttons and lists in one pure black or white,
//          with text of at least 15:1 on it. Usual ones have a grey window.
// Threads  Pure.
#pragma once

#include <QPalette>
#include <algorithm>
#include <cmath>

// The contrast ratio of WCAG 2, from 1 to 21.
inline double ContrastOf(const QColor& a, const QColor& b) {
  const auto linear = [](double part) {
    return part <= 0.04045 ? part / 12.92 : std::pow((part + 0.055) / 1.055, 2.4);
  };
  const auto luminance = [&linear](const QColor& color) {
    return 0.2126 * linear(color.redF()) + 0.7152 * linear(color.greenF()) +
           0.0722 * linear(color.blueF());
  };
  const double x = luminance(a), y = luminance(b);
  return (std::max(x, y) + 0.05) / (std::min(x, y) + 0.05);
}

inline bool IsHighContrast(const QPalette& palette) {
  constexpr double kLeast = 15;
  const auto color = [&palette](QPalette::ColorRole role) {
    return palette.color(QPalette::Active, role);
  };
  const QColor base = color(QPalette::Base);
  if (base != QColor(Qt::black) && base != QColor(Qt::white)) return false;
  if (color(QPalette::Window) != base || color(QPalette::Button) != base) return false;
  return ContrastOf(color(QPalette::Text), base) >= kLeast;
}
