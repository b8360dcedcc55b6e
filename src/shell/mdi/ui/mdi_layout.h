// Cascade, tile and arrange icons.
//
// Threads  Interface thread.
#pragma once

#include <QMdiArea>

#include "docview/frame.h"

// Minimised windows are not cascaded or tiled; a maximised one is restored first.
void LayOut(QMdiArea& area, WindowLayout layout);
