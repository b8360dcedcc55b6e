// The colours of a row, mixed from the palette's.
//
// Threads  Pure.
#pragma once

#include <QColor>
#include <QPalette>
#include <optional>

#include "controls/text/cell_parts.h"

struct RowKind {
  bool selected = false;
  bool keyboard = false;  // the list has the keyboard focus
  bool stripe = false;
  RowTint tint = RowTint::None;
  std::optional<RowColours> colours = {};  // instead of the tint and the stripe
};

struct RowLook {
  QColor background, text;
  QColor soft;          // for secondary text: line ends, hints
  QColor grid;          // between the columns
  QColor accent;        // frame and mark of the focused row, the mark of the end
  QColor hit, hitText;  // the hits of a search
};

RowLook LookOf(const QPalette& palette, const RowKind& row);
