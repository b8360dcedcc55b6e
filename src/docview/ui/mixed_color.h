// Shades between two colours of a palette.
#pragma once

#include <QColor>

// `share` of b in a, 0 to 1.
inline QColor Mixed(const QColor& a, const QColor& b, double share) {
  const auto mix = [share](int x, int y) { return qRound(x + (y - x) * share); };
  return QColor(mix(a.red(), b.red()), mix(a.green(), b.green()), mix(a.blue(), b.blue()));
}
