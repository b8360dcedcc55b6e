// Paints the mark of a row, and says it.
//
// Threads  Interface thread.
#pragma once

#include <QColor>
#include <QFontMetrics>
#include <QRect>
#include <QString>

#include "controls/text/cell_parts.h"

class QPainter;

// `row`: its whole height, and the width that can be seen. A frame of the focus is painted between
// the two.
// Covers what stands where the box comes, and in a gap before it.
void CoverBelowMark(QPainter& painter, const QFontMetrics& metrics, const RowMark& mark,
                    const QRect& row, const QColor& ground);
void PaintRowMark(QPainter& painter, const QFontMetrics& metrics, const RowMark& mark,
                  const QRect& row);
// Before its box no text stands in so many pixels.
inline constexpr int kMarkGapPx = 6;
// The place of its box.
QRect MarkBox(const QFontMetrics& metrics, const RowMark& mark, const QRect& row);
// "Mark 3, Note: first line second line".
QString MarkInWords(const RowMark& mark);
