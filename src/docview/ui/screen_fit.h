// Windows that stay on their screen.
//
// Threads  Interface thread.
#pragma once

#include <QWidget>

// The room of the window's screen that bars and panels leave; device-independent pixels.
QRect ScreenRoom(const QWidget& window);

// Makes a shown window small enough for its screen and moves it there, its decoration included. A
// maximised or minimised one stays as it is.
void KeepOnScreen(QWidget& window);
