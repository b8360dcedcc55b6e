// The view of one window: columns, filter text, colours, list or tree, the panes beside the rows,
// the focused row. It comes back when the file is opened again, and profiles are applied to it.
//
// Order    Columns, colours and panes when the window opens; the rest when the file has been
//          loaded: first the filter text, then the row, last the tree. What the user has done
//          meanwhile stays, a profile that he has applied too. A monitor gets all at once, and has
//          no row.
// Panes    Those of the view and no others, also if the settings open others. Where the view says
//          nothing about panes, those of the settings stay.
// Another  A file that is not the one that was known gets its columns and colours alone. So does
//          one whose view was being applied when the program ended last: it may have been the
//          reason.
// Kept     When the window closes, unless its view has not come back yet. Of several windows of a
//          document, and of several programs, the last one that closes counts; the first one gets
//          the view.
// Off      Nothing is read, applied or kept.
// Owner    The frame owns it. It borrows the frame and its views.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <optional>
#include <string>

#include "docview/host_timer.h"
#include "docview/posted_step.h"
#include "panes/pane_watcher.h"
#include "shell/views/viewed_frame.h"
#include "views/view_text.h"

class CTraceDoc;

class FrameView final : private PaneWatcher {
 public:
  FrameView(Host& host, ViewedFrame& frame)
      : m_frame(frame), m_loaded(host, [this] { Restore(); }) {}

  // The window is there, with its first view. Later calls do nothing.
  void OnShown();
  // The window goes, with its views.
  void OnDestroy();

  ViewState Collect() const;
  // By the user. Gives what could not be applied, a line for each; empty: all was.
  std::string Apply(const ViewState& state);
  // The columns and colours of a new window, all traces.
  void ApplyStandard();

 private:
  void OnShownTraces() override;
  void StopWatching();
  void Restore();
  void RestoreTraces(const StoredView& view);
  void EndTrial();
  bool HasUserActed() const;
  StoredView Kept(const CTraceDoc& document) const;
  std::string ApplyLook(const ViewState& state);
  std::string ApplyFilter(const ViewState& state);
  std::string ApplyTree(const ViewState& state);
  void GoToRow(const ViewRow& row);
  CTraceDoc* Document() const;

  ViewedFrame& m_frame;
  PostedStep m_loaded;  // the views know it too by then
  bool m_shown = false, m_watches = false, m_restored = false;
  bool m_chosen = false;             // the user has applied something
  std::string m_source;              // empty: its view does not come back
  std::optional<StoredView> m_view;  // that is to come back, or is on trial by this window
  std::unique_ptr<HostTimer> m_trial;
};
