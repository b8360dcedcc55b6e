// Keyboard and mouse of the row list.
//
// Keys     Arrows, Page, Home and End move focus and selection. With Shift the selection extends
//          from the anchor, with Ctrl only the focus moves. Space selects, Ctrl+Space toggles.
//          Delete is the owner's, if it wants it. Every other key, also Ctrl+A, Ctrl+C and letters,
//          is left to the window.
// Mouse    Click, Ctrl, Shift, and a drag that scrolls beyond the edge. A click is reported at the
//          release, for the row of the press, unless it became a drag.
// Threads  Interface thread.
#pragma once

#include <QPoint>
#include <QTimer>
#include <cstdint>

class QContextMenuEvent;
class QKeyEvent;
class QMouseEvent;
class QtRowList;

class RowInput {
 public:
  explicit RowInput(QtRowList& list);

  void KeyPress(QKeyEvent& event);
  void MousePress(QMouseEvent& event);
  void MouseMove(QMouseEvent& event);
  void MouseRelease(QMouseEvent& event);
  void DoubleClick(QMouseEvent& event);
  void ContextMenu(QContextMenuEvent& event);

 private:
  enum class Drag { None, Pressed, Selecting };

  // The row that a key leads to; -1 for other keys.
  int TargetOf(int key) const;
  int PageDown(int from) const;
  int PageUp(int from) const;
  void MoveTo(int row, Qt::KeyboardModifiers modifiers);
  void Space(Qt::KeyboardModifiers modifiers);
  void Select(int row, Qt::KeyboardModifiers modifiers);
  void SelectForMenu(int row);
  void DragTo(const QPoint& point);
  void AutoScroll();
  // The row of the press; -1 if there was none or it has been trimmed.
  int PressedRow() const;

  QtRowList& m_list;
  QTimer m_autoScroll;
  Drag m_drag = Drag::None;
  bool m_adding = false;        // the drag keeps the earlier selection
  std::int64_t m_pressed = -1;  // the row of the press, absolute as in RowStates
  QPoint m_mouse;               // of the drag, in the viewport
};
