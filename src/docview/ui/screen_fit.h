// Keeps windows on their screen.
//
// Threads  Interface thread.
#pragma once

#include <QWidget>

// The part of the window's screen without bars and panels; device-independent pixels.
QRect ScreenRoom(const QWidget& window);

// Makes a shown window small enough for its screen and moves it there, including its decoration. A
// maximised or minimised window stays as it is.
void KeepOnScreen(QWidget& window);
