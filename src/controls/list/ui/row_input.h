// Keyboard and mouse of the row list.
//
// Keys     Arrows, Page, Home and End move focus and selection; with Shift the selection grows from
//          the anchor, with Ctrl only the focus moves. Space selects, Ctrl+Space turns over. Every
//          other key, also Ctrl+A, Ctrl+C and letters, is left to the window.
// Mouse    Click, Ctrl, Shift and a drag that scrolls on beyond the edge; a click is told at
//          release, where the button went down, unless a drag has come out of it.
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

  // The row that a key leads to, -1 when it is none of ours.
  int TargetOf(int key) const;
  int PageDown(int from) const;
  int PageUp(int from) const;
  void MoveTo(int row, Qt::KeyboardModifiers modifiers);
  void Space(Qt::KeyboardModifiers modifiers);
  void Select(int row, Qt::KeyboardModifiers modifiers);
  void SelectForMenu(int row);
  void DragTo(const QPoint& point);
  void AutoScroll();
  // The row where the button went down; -1 when there was none or it has been trimmed.
  int PressedRow() const;

  QtRowList& m_list;
  QTimer m_autoScroll;
  Drag m_drag = Drag::None;
  bool m_adding = false;        // the drag keeps what was selected besides
  std::int64_t m_pressed = -1;  // the row where the button went down, absolute as in RowStates
  QPoint m_mouse;               // where the drag is, in the viewport
};
