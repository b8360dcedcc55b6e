// Who follows what a pane shows: the panes beside the rows and the strip above them.
//
// Shape    A call says that something has changed, and comes in the midst of the change. A watcher
//          notes it, and looks at the pane in a posted step (docview/posted_step.h). Only the
//          traces of OnRemoval are dealt with at once: they are released after the call.
// Cost     The calls come for each step of a held arrow key and for each hint of a monitor, so they
//          cost next to nothing. Nobody watches what the user does not see.
// Owner    A watcher leaves its pane (TracePane::Unwatch) before either of them goes.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <vector>

class CTraceHint;
class TraceEvent_i;

class PaneWatcher {
 public:
  // TracePane::CurrentEvent is another one, or none.
  virtual void OnCurrentTrace() {}
  // Rows or items were added, removed, filtered or cleared, or show something else. The current
  // trace may have changed with them. After a clear no trace is left of those before.
  virtual void OnShownTraces() {}
  // The document trims these traces, shown or not.
  virtual void OnRemoval(const CTraceHint& /*removed*/) {}
  // Other rows are visible, or more or fewer of them.
  virtual void OnScrolled() {}

 protected:
  ~PaneWatcher() = default;
};

class WatchedPane {
 public:
  // A watcher is told of changes until it leaves; it does neither while it is told.
  void Watch(PaneWatcher& watcher) { m_watchers.push_back(&watcher); }
  void Unwatch(PaneWatcher& watcher) { std::erase(m_watchers, &watcher); }
  // Calls visit for the traces that the user sees now; a pane without rows: for the current one.
  using VisitTrace = std::function<void(const TraceEvent_i&)>;
  virtual void VisitPage(const VisitTrace& /*visit*/) const {}

 protected:
  ~WatchedPane() = default;
  void Tell(void (PaneWatcher::*what)()) {
    for (PaneWatcher* const watcher : m_watchers) (watcher->*what)();
  }
  void TellRemoval(const CTraceHint& removed) {
    for (PaneWatcher* const watcher : m_watchers) watcher->OnRemoval(removed);
  }

 private:
  std::vector<PaneWatcher*> m_watchers;
};
