#include "shell/mdi/ui/mdi_layout.h"

#include <QMdiSubWindow>
#include <QStyle>
#include <cmath>

namespace {

using Windows = QList<QMdiSubWindow*>;

bool IsIcon(const QMdiSubWindow& window) {
  return window.isMinimized() || window.isShaded();
}

Windows Visible(const QMdiArea& area, bool icons) {
  Windows windows;
  for (QMdiSubWindow* window : area.subWindowList(QMdiArea::StackingOrder)) {
    if (window->isVisible() && IsIcon(*window) == icons) windows.append(window);
  }
  return windows;
}

// From back to front, each a title bar further down and to the right.
void Cascade(const Windows& windows, const QRect& room) {
  const QSize size = room.size() * 3 / 4;
  int step = 0;
  for (QMdiSubWindow* window : windows) {
    window->showNormal();
    const int title = window->style()->pixelMetric(QStyle::PM_TitleBarHeight, nullptr, window);
    const int steps = std::max(1, (room.height() - size.height()) / std::max(1, title) + 1);
    const int offset = (step++ % steps) * title;
    window->setGeometry(QRect(room.topLeft() + QPoint(offset, offset), size));
  }
}

// The front window first. Up to three are one above the other in full width, which suits long rows;
// more are in columns.
void Tile(const Windows& windows, const QRect& room) {
  const int count = static_cast<int>(windows.size());
  if (count == 0) return;
  const int columns = count < 4 ? 1 : static_cast<int>(std::sqrt(count));
  int index = count - 1;
  for (int column = 0; column < columns; ++column) {
    const int rows = count / columns + (column >= columns - count % columns ? 1 : 0);
    const int left = room.width() * column / columns;
    const int right = room.width() * (column + 1) / columns;
    for (int row = 0; row < rows; ++row, --index) {
      const int top = room.height() * row / rows;
      const int bottom = room.height() * (row + 1) / rows;
      windows[index]->showNormal();
      windows[index]->setGeometry(left, top, right - left, bottom - top);
    }
  }
}

// Along the bottom, row by row upwards.
void ArrangeIcons(const Windows& icons, const QRect& room) {
  int left = 0, bottom = room.height();
  for (QMdiSubWindow* icon : icons) {
    if (left > 0 && left + icon->width() > room.width()) {
      left = 0;
      bottom -= icon->height();
    }
    icon->move(left, bottom - icon->height());
    left += icon->width();
  }
}

}  // namespace

void LayOut(QMdiArea& area, WindowLayout layout) {
  // Scroll bars are there for windows outside the area, and afterwards there will be none.
  const QRect room(QPoint(0, 0), area.contentsRect().size());
  QMdiSubWindow* front = area.currentSubWindow();
  switch (layout) {
    case WindowLayout::Cascade:
      Cascade(Visible(area, false), room);
      break;
    case WindowLayout::Tile:
      Tile(Visible(area, false), room);
      break;
    case WindowLayout::ArrangeIcons:
      ArrangeIcons(Visible(area, true), room);
      break;
  }
  if (front) area.setActiveSubWindow(front);
}
