// The window of the panes beside the rows: a tab for each of them, one of which is in front.
//
// Shape    Tabs are 0..n-1 from the left.
// Owner    BesidePanes owns it; it borrows the controls, which it gives back when their tab goes.
// Errors   A tab that does not exist is ignored.
// Threads  Interface thread.
//
// The Qt class (shell/beside/ui) and a fake (tests/support) pass the same contract test.
#pragma once

#include <cstddef>
#include <string>

#include "docview/view.h"

// Actions of the user. A call of BesideArea reports nothing.
class BesideAreaOwner {
 public:
  virtual void OnTab(std::size_t place) = 0;  // another tab is in front
  virtual void OnCloseTab(std::size_t place) = 0;

 protected:
  ~BesideAreaOwner() = default;
};

// SetFocus gives it to the control in front.
class BesideArea : public ViewControl {
 public:
  // The first tab is in front; a later one changes nothing in that.
  virtual void InsertTab(std::size_t place, const std::string& title, ViewControl& control) = 0;
  // If it was in front, the next one is, or the one before.
  virtual void RemoveTab(std::size_t place) = 0;
  virtual void SetTabTitle(std::size_t place, const std::string& title) = 0;
  virtual void SetFront(std::size_t place) = 0;
  virtual std::size_t Front() const = 0;  // 0 where there is no tab
  virtual bool HasFocus() const = 0;      // anything in it
};
