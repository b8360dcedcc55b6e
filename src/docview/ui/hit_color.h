// The background colour of a search's hits, wherever text is shown. The palette's text colour stays
// readable on it.
#pragma once

#include <QColor>
#include <QPalette>

#include "docview/ui/mixed_color.h"

inline QColor HitColor(const QPalette& palette) {
  constexpr double kInLight = 0.6, kInDark = 0.38;
  const QColor base = palette.color(QPalette::Active, QPalette::Base);
  const bool dark = base.lightness() < palette.color(QPalette::Active, QPalette::Text).lightness();
  return Mixed(base, QColor(0xff, 0xc8, 0x3d), dark ? kInDark : kInLight);
}
