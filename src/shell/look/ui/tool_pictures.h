// The drawings of the tool bar's buttons.
//
// Shape    Paths on a grid of 16 by 16.
// Threads  Interface thread.
#pragma once

#include <QColor>

class QPainter;

// The pens of a picture.
struct PictureInk {
  QColor line, accent;
};

using DrawPicture = void (*)(QPainter&, const PictureInk&);

// Null for a command without a picture.
DrawPicture PictureOf(unsigned command);
