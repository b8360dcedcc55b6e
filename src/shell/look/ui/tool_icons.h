// The tool bar's pictures, drawn as paths on a grid of 16 by 16.
//
// A picture is drawn for the requested size and pixel ratio, in the colours of the application's
// palette, so that it is sharp and readable in light and dark colours and when disabled.
//
// Threads  Interface thread.
#pragma once

#include <QIcon>

// A null icon for a command without a picture.
QIcon ToolIcon(unsigned command);
