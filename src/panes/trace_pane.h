// The common base of all panes that show a document's traces: the filter, the current trace, the
// commands on it, the hits of a search, the hints and the status panes. The list and the tree are
// two panes.
//
// Owner    Owns its filter; borrows the document and its traces. It forgets a trace when the
//          document reports its removal, and never reads one after a clear.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "documents/trace_doc.h"
#include "docview/view.h"
#include "panes/cell_steps.h"
#include "panes/numbered_pane.h"
#include "panes/pane_watcher.h"
#include "panes/searched_pane.h"
#include "panes/trace_scan.h"
#include "tree/filter/trace_filter.h"
#include "tree/find/find_hits.h"

class CopiedTraces;
class CTraceIterator;

class TracePane : public CView, public WatchedPane, public SearchedPane, public NumberedPane {
 public:
  explicit TracePane(CTraceDoc& document);
  ~TracePane() override;

  void OnActivateView(bool activate, CView* activated, CView* deactivated) override;
  // Passes each hint to an operation of the derived class.
  void OnUpdate(CView* sender, unsigned hint, CObject* object) override;
  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override;

  // The trace of the current row or item; null without one, or when the trace was removed.
  virtual TraceEvent_i* CurrentEvent() const = 0;
  // Copies the filter and clears the changed mark. False when the user cancelled the rebuild: then
  // nothing has changed.
  bool SetFilter(const CTraceFilter& filter, bool rebuild);
  // The filter text beside the marks; null: none. False when the user cancelled the rebuild: then
  // nothing has changed. A pane may go on in the background: see FilterProgress.
  virtual bool SetWhere(WhereProgramPtr where);
  // ---- a text that is being applied in the background
  // The thousandths that are done; none: nothing is under way.
  virtual std::optional<int> FilterProgress() const { return std::nullopt; }
  // Ends it. Unless all traces are there, filter and traces are as before.
  virtual void CancelFilter() {}
  // Waits for its end, below a box; false: the user does not. Commands that need all that the pane
  // shows call it first.
  virtual bool FinishFilter() { return true; }
  // What the context menu offers for the place that it was opened at.
  const std::vector<CellStep>& OfferedSteps() const { return m_offered; }
  // Called when the filter's progress has changed, and, while the pane is the active one, the shown
  // traces or the filter.
  std::function<void()> m_onStatus;
  // Fills the pane unless it is filled or the document still loads; false: cancelled.
  virtual bool Build() { return true; }
  // False for a pane that shows less than its document because it could not be filled.
  virtual bool IsBuilt() const { return true; }
  TraceScanSetup m_scanSetup;  // of the texts to come
  // To select when the pane is shown: that of the pane before. Null when it was removed.
  TraceEvent_i* m_currentEvent = nullptr;
  CTraceFilter m_filter;
  bool m_filterChanged = false;  // changed here since it was last passed to another pane

  CTraceDoc& Document() const { return m_document; }
  // Sends hint 1006 for the event to the other views if the document synchronises.
  void Follow(TraceEvent_i* event);

 protected:
  // ---- what it shows
  virtual int TraceCount() const = 0;  // for the status pane
  virtual bool ShowsAny() const = 0;   // there is something to search
  virtual void RepaintHits() = 0;      // the hits have changed
  virtual bool Rebuild() = 0;          // from the document, by the filter; false: cancelled
  // ---- hints
  virtual void OnOptions() {}
  virtual void OnReady() = 0;
  virtual void AddTraces(const CTraceHint& hint) = 0;
  virtual void RemoveTraces(const CTraceHint& hint) = 0;  // m_currentEvent is none of them
  virtual void FollowTrace(CView* sender, const TraceEvent_i& target) = 0;
  // ---- commands
  // Without one, Properties and Goto Source keep the state they had.
  virtual bool HasSelection() const { return true; }
  virtual const TraceEvent_i* SourceEvent() const { return CurrentEvent(); }
  virtual std::unique_ptr<CTraceIterator> MakeIterator() = 0;  // at the current trace; null: none
  virtual void Find(bool asked) = 0;  // asked: right after the dialog, else Find Next
  virtual void OnExport() = 0;
  virtual std::unique_ptr<CopiedTraces> Selected();  // null: none are

  // What a text asks of marks and notes, read anew; null: nothing. A box says why that fails.
  std::shared_ptr<const WhereMarks> MarksFor(const WhereProgramPtr& where);
  // Like hint 1006 for the event, to this pane alone.
  void GoTo(CView* sender, TraceEvent_i* event);
  void ShowHits(bool on);
  void ShowContextMenu(int screenXPx, int screenYPx, std::vector<CellStep> offered);
  // Other traces or another filter. The active view updates both status panes, or only the count.
  void ReportStatus();
  void ReportCount();

  CTraceDoc& m_document;
  std::unique_ptr<FindHits> m_hits;  // of the search that led to the current trace

 private:
  void MapCommands();
  void MapCopies();
  void OnFind();
  void OnViewProperties();
  void OnGotoSource();
  void OnUpdateGotoSource(CCmdUI& ui);
  void OnSynchronize();
  void OnFilter();

  bool m_active = false;
  std::vector<CellStep> m_offered;
};
