// Cascade, tile and arrange icons.
//
// Threads  Interface thread.
#pragma once

#include <QMdiArea>

#include "docview/frame.h"

// Minimised windows stay out of a cascade and of the tiles; a maximised one is restored for them.
void LayOut(QMdiArea& area, WindowLayout layout);
