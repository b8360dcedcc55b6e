// Keyboard and mouse of the tree.
//
// Keys     Up, Down, Page, Home and End move the selection; Right opens, then goes to the first
//          child; Left closes, then goes to the parent; Plus and Minus open and close; Enter is a
//          double click. Every other key is left to the window.
// Mouse    A press on a button opens or closes, a press on a label selects. A click is reported at
//          the release. The right button selects before its menu opens.
// Threads  Interface thread.
#pragma once

#include "controls/tree/tree_control.h"

class QContextMenuEvent;
class QKeyEvent;
class QMouseEvent;
class QtTreeControl;

class TreeInput {
 public:
  explicit TreeInput(QtTreeControl& tree) : m_tree(tree) {}

  void KeyPress(QKeyEvent& event);
  void MousePress(QMouseEvent& event);
  void MouseRelease(QMouseEvent& event);
  void DoubleClick(QMouseEvent& event);
  void ContextMenu(QContextMenuEvent& event);
  // The item will be deleted with all items below it; 0: all items.
  void OnDelete(TreeItem item);

 private:
  bool OpenOrMove(int key, TreeItem selected);
  // The row that a key leads to from the selected one; -1 for other keys.
  std::int64_t TargetOf(int key, TreeItem selected) const;
  void MoveTo(TreeItem item);

  QtTreeControl& m_tree;
  TreeItem m_pressed = 0;  // the item whose label was pressed with the left button
  bool m_down = false;     // the left button, pressed outside the tree's buttons
};
