// What the view of a window is taken from and given to.
//
// Threads  Interface thread.
#pragma once

#include <string>
#include <vector>

class CTraceView;
class FrameFilter;
class TracePane;

class ViewedFrame {
 public:
  // Null before the list exists.
  virtual CTraceView* ListView() const = 0;
  virtual TracePane* ShownPane() const = 0;
  virtual FrameFilter& Filter() = 0;
  virtual bool IsTreeShown() const = 0;
  // Shows the other one of list and tree. False: the user cancelled.
  virtual bool ToggleTree() = 0;
  // Those beside the rows.
  virtual std::vector<std::string> OpenPanes() const = 0;
  // These and no others. Returns the ones that there are none of.
  virtual std::vector<std::string> OpenPanes(const std::vector<std::string>& names) = 0;
  // In the status bar, when the windows have changed.
  virtual void ShowNotice(const std::string& notice) = 0;

 protected:
  ~ViewedFrame() = default;
};
