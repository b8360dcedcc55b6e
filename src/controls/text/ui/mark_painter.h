// Paints the mark of a row, and says it.
//
// Threads  Interface thread.
#pragma once

#include <QFontMetrics>
#include <QRect>
#include <QString>

#include "controls/text/cell_parts.h"

class QPainter;

// `row`: its whole height, and the width that can be seen.
void PaintRowMark(QPainter& painter, const QFontMetrics& metrics, const RowMark& mark,
                  const QRect& row);
// The place of its box.
QRect MarkBox(const QFontMetrics& metrics, const RowMark& mark, const QRect& row);
// "Mark 3, Note: first line second line".
QString MarkInWords(const RowMark& mark);
