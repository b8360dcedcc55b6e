// The program's icon, drawn for each requested size: a dark tile with rows of small stones, one of
// which has another colour.
//
// Threads  Interface thread.
#pragma once

#include <QIcon>

QIcon AppIcon();
QPixmap AppIconPixmap(int sizePx);
