// The colours of the overview on a ground: readable on light ones and on dark ones.
//
// Threads  Pure.
#pragma once

#include <QColor>

struct OverviewColours {
  QColor ground, text, line, page, chosen, cursor;
  QColor severities[4];  // as SliceCounts has them: info, warn, error, none
  QColor loss, mark, hit;
};

// `highlight`: of a selection.
OverviewColours OverviewColoursOn(const QColor& ground, const QColor& text,
                                  const QColor& highlight);
