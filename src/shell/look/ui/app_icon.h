// The program's icon, drawn for every size that is asked for: a dark tile with rows of small
// stones, one of which stands out.
//
// Threads  Interface thread.
#pragma once

#include <QIcon>

QIcon AppIcon();
QPixmap AppIconPixmap(int sizePx);
