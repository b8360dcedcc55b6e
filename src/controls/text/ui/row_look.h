// The colours of a row: the palette's, mixed.
//
// Threads  Pure.
#pragma once

#include <QColor>
#include <QPalette>

#include "controls/text/cell_parts.h"

struct RowKind {
  bool selected = false;
  bool keyboard = false;  // the list has it
  bool stripe = false;
  RowTint tint = RowTint::None;
};

struct RowLook {
  QColor background, text;
  QColor soft;          // beside the text: line ends, hints
  QColor grid;          // between the columns
  QColor accent;        // frame and mark of the focused row, the mark of the end
  QColor hit, hitText;  // what a search has found
};

RowLook LookOf(const QPalette& palette, const RowKind& row);
