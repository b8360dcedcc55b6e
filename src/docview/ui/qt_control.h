// The Qt side of a control: a widget that a frame can show.
//
// Owner    The view owns its control, and with it the widget; a frame's window only borrows it. A
//          window that is destroyed before the view must release the widget first (ReleaseControl),
//          because Qt deletes children with their parent.
// Threads  Interface thread.
#pragma once

#include <QWidget>

#include "docview/view.h"

class QtControl {
 public:
  virtual QWidget* Widget() = 0;

 protected:
  ~QtControl() = default;
};

// The widget of a view's control; null when the control is not Qt's.
inline QWidget* WidgetOf(ViewControl* control) {
  auto* face = dynamic_cast<QtControl*>(control);
  return face ? face->Widget() : nullptr;
}

// Removes the widget from its window, without showing it as a window of its own.
inline void ReleaseControl(QWidget& widget) {
  widget.hide();
  widget.setParent(nullptr);
}
