// The room of a child window's view, which a control beside it may share.
//
// Shape    The control beside has the extent that the user gave it last. While the room is too
//          small for both, the view keeps a few lines, and the other one takes what is left. F8
//          makes it larger and Shift+F8 smaller, wherever the focus is in here.
// Owner    Borrows the widgets.
// Threads  Interface thread.
#pragma once

#include <QPointer>
#include <QSplitter>
#include <QTimer>
#include <QVBoxLayout>
#include <functional>

#include "docview/child_frame_face.h"

class ViewSplit final : public QSplitter {
 public:
  explicit ViewSplit(QWidget* parent);

  void AddControl(QWidget* control) { m_views->layout()->addWidget(control); }
  // In place of the one before, which is given back; null: none. 0: a third of the room.
  void ShowBeside(QWidget* beside, BesideEdge edge, int extentPx);
  // The user has moved the border and let it stand.
  std::function<void(int extentPx)> m_extentChanged;

 protected:
  void resizeEvent(QResizeEvent* event) override;
  void changeEvent(QEvent* event) override;

 private:
  void AddKey(const QKeySequence& key, int steps);
  void MoveBorder(int steps);
  int Room() const;
  void KeepLines();
  void LayOut();

  QWidget* const m_views;
  QWidget* const m_aside;  // hidden: nothing is beside the view
  QPointer<QWidget> m_beside;
  int m_extentPx = 0;  // as wanted; 0: a third
  QTimer m_moved;      // a drag moves the border many times
};
