// Draws one line of text into a cell.
//
// Threads  Interface thread.
#pragma once

#include <QFontMetrics>
#include <QRect>
#include <QString>

#include "listview/rows/ui/row_look.h"

class QPainter;

// Characters of a line.
struct LinePart {
  qsizetype first = 0, count = 0;
  qsizetype End() const { return first + count; }
};

// In the height of `room` and cut with dots at its width; nothing where not even the dots fit.
// Marks of line ends are softer than the text, and the part that a search has found is tinted.
void PaintLine(QPainter& painter, const QFontMetrics& metrics, const RowLook& look,
               const QRect& room, ColumnAlign align, const QString& whole, LinePart hit);
