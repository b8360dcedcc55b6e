// The window of the details pane.
//
// Threads  Interface thread.
#pragma once

#include "docview/view.h"

// It reads the pane when it is told so; SetFocus gives the fields the focus.
class DetailsFace : public ViewControl {
 public:
  // Another trace, or another state.
  virtual void Update() = 0;
  // Only the rows: the names of the stack have come.
  virtual void UpdateRows() = 0;
};
