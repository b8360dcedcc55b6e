// The tint behind text that a search finds: the palette's text stays readable on it.
#pragma once

#include <QColor>
#include <QPalette>

inline QColor HitColor(const QPalette& palette) {
  const bool dark = palette.color(QPalette::Base).lightness() < 128;
  return dark ? QColor(0x6b, 0x53, 0x00) : QColor(0xff, 0xe5, 0x8f);
}
