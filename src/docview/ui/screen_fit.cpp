#include "docview/ui/screen_fit.h"

#include <QScreen>
#include <algorithm>

QRect ScreenRoom(const QWidget& window) {
  const QScreen* const screen = window.screen();
  return screen ? screen->availableGeometry() : QRect();
}

void KeepOnScreen(QWidget& window) {
  const QRect room = ScreenRoom(window);
  if (room.isEmpty() || window.isMaximized() || window.isMinimized() || window.isFullScreen())
    return;
  const QSize decoration = window.frameGeometry().size() - window.size();
  const QSize size = window.size().boundedTo(room.size() - decoration);
  if (size != window.size()) window.resize(size);
  const QSize outer = window.size() + decoration;
  const QPoint at = window.pos();
  const QPoint inside(std::max(std::min(at.x(), room.right() + 1 - outer.width()), room.left()),
                      std::max(std::min(at.y(), room.bottom() + 1 - outer.height()), room.top()));
  if (inside != at) window.move(inside);
}
