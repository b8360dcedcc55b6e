// One pane beside the rows of a window: details, marks, hits. It follows the list or the tree that
// the window shows.
//
// Owner    BesidePanes owns it, from the first time it is shown until it is put away; then it has
//          no window. It owns its control. Borrows the TracePane, until another one is given.
// Threads  Interface thread.
#pragma once

#include <string>

#include "panes/pane_watcher.h"

class TracePane;
class ViewControl;

class BesidePane : public PaneWatcher {
 public:
  virtual ~BesidePane() = default;

  virtual std::string Title() const = 0;  // of its tab
  virtual ViewControl& Control() = 0;
  // The window shows this one: first after the pane was made, then when list and tree change
  // places.
  virtual void OnPane(TracePane& pane) = 0;
  // It is seen, or no longer: put away, or behind another tab. The watcher's calls come only while
  // it is seen, so it looks at everything anew when it is.
  virtual void OnShown(bool seen) = 0;
};
