// What the overview needs of its window, and its face.
//
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/view.h"

// The strip's window.
class OverviewFace : public ViewControl {
 public:
  virtual bool HasFocus() const = 0;
  // What is shown has changed.
  virtual void Update() = 0;
};

class OverviewOwner {
 public:
  // A step of the filter text.
  virtual void TakeOverviewStep(const std::string& text) = 0;
  // Escape, where there is nothing else to leave.
  virtual void LeaveOverview() = 0;

 protected:
  ~OverviewOwner() = default;
};
