// The tree view of a trace document: which threads issued the traces, inside which block, and how
// long each block took. The model is complete; the control has items only for the machines and for
// the children of nodes that have been opened.
//
// Owner    Owns control and model; borrows the traces. A failed insertion ends the fill of a node.
// Long     A rebuild makes a new tree, which replaces the old one when it is complete; after a
//          cancel the old tree stays. A filter text does so in the background (tree_filtering.h).
//          A tree that lost its traces, or was never built, ignores hints.
// Cost     No hint's work grows with the traces held or the items shown, except for a rebuild, for
//          the first opening of a node and for a search.
// Threads  Interface thread.
#pragma once

#include <memory>
#include <vector>

#include "controls/tree/tree_control.h"
#include "panes/trace_pane.h"
#include "tree/find/find_search.h"
#include "tree/proc/tree_filtering.h"

class CProcViewIterator;

class CProcView : public TracePane, public TreeControlOwner, private ProcItems {
 public:
  CProcView(CTraceDoc& document, const TreeControlMaker& makeTree);
  ~CProcView() override;

  bool SetWhere(WhereProgramPtr where) override;
  std::optional<int> FilterProgress() const override;
  void CancelFilter() override;
  bool FinishFilter() override;

  void OnInitialUpdate() override;
  ViewControl* Control() override { return m_tree.get(); }

  TraceEvent_i* CurrentEvent() const override;  // of the selected item; null: trimmed
  void VisitPage(const VisitTrace& visit) const override;
  const TraceEvent_i* EventAbove() const override;
  bool Build() override;
  bool IsBuilt() const override { return m_built; }

  // The items in the order of the tree, opened or not: makes missing ones on the way. 0: the end.
  TreeItem NextTreeItem(TreeItem item);
  TreeItem PrevTreeItem(TreeItem item);
  TreeItem LastTreeItem() const;  // among the existing items
  // From the selected item, if there is one, continuing at the start of the tree; selects a hit.
  FindResult FindInTree();
  const ProcModel& Model() const { return *m_model; }
  const TreeFiltering* Filtering() const { return m_filtering.get(); }  // null: nothing under way
  TreeControl& Tree() const { return *m_tree; }
  CTraceEvent* NodeOf(TreeItem item) const;  // null for 0
  void Show(TreeItem item);                  // selects it and makes it visible
  bool Lacks(TreeItem item) const;           // children of its node without items
  ItemFill FillOf(TreeItem item);            // REQUIRES: Lacks

  std::string TreeItemText(TreeItemData data) override;
  std::optional<RowMark> TreeItemMark(TreeItemData data) override;
  std::vector<HitRange> TreeTextHits(const std::string& text) override;
  void OnTreeSelectionChanged() override;
  bool OnTreeItemExpanding(TreeItem item) override;
  void OnTreeClicked(TreeItem item) override;
  void OnTreeDoubleClicked() override;
  void OnTreeRightPressed(TreeItem item) override;
  void OnTreeContextMenu(int screenXPx, int screenYPx) override;

 private:
  friend class CProcViewIterator;
  TreeItem InsertTreeItem(TreeItem parentItem, CTraceEvent& node) override;
  bool IsExpanded(TreeItem item) const override;
  void OnLabelChanged(CTraceEvent& node) override;
  void DeleteItem(TreeItem item) override;
  void OnFirstMachine() override;

  int TraceCount() const override { return m_model->TraceCount(); }
  bool ShowsAny() const override { return m_tree->Walk(0, TreeStep::FirstChild) != 0; }
  void RepaintHits() override { m_tree->Repaint(); }
  bool Rebuild() override { return RebuildTree(); }
  void OnOptions() override;
  void OnReady() override;
  void AddTraces(const CTraceHint& hint) override;
  void RemoveTraces(const CTraceHint& hint) override;
  void FollowTrace(CView* sender, const TraceEvent_i& target) override;
  bool HasSelection() const override { return m_tree->SelectedItem() != 0; }
  const TraceEvent_i* SourceEvent() const override;
  std::unique_ptr<CTraceIterator> MakeIterator() override;
  void Find(bool asked) override;
  void OnExport() override;
  std::unique_ptr<CopiedTraces> Selected() override;
  bool RebuildTree();
  void EmptyIfCleared();
  void TakeOver(std::unique_ptr<ProcModel> model);
  std::unique_ptr<ProcModel> ReplaceTree(std::unique_ptr<ProcModel> model);
  void LeaveEmptyTree();
  std::optional<NodePosition> PlaceOf(const TraceEvent_i& target);
  void FollowTail(TreeItem item);
  void Fill(TreeItem item);
  bool FillWatched(TreeItem item);
  bool RunWork(const char* message, LongWork& work);
  void EnsureTreeItem(CTraceEvent& node);
  void BeginFiltering(WhereProgramPtr where);
  void EndFiltering(bool applied);
  void GoOnFiltering();
  void StepFiltering(std::chrono::milliseconds time, bool wait);
  void ShowNewTree();
  void LookForSelection(TreePass::Clock::time_point until);
  void FollowInSteps(const TraceEvent_i* target);
  void BeforeRemoval(const CTraceHint& hint);

  std::unique_ptr<ProcModel> m_model;
  std::unique_ptr<TreeControl> m_tree;
  PostedStep m_step{GetHost(), [this] { GoOnFiltering(); }};
  std::unique_ptr<TreeFiltering> m_filtering;                 // null: no text is being applied
  int m_works = 0;                                            // long works on the tree
  bool m_firstUpdate = true, m_built = false, m_utc = false;  // m_utc: the zone of its text
  bool m_inDrain = false;                                     // no box may interrupt a drain
  std::uint64_t m_generation = 0;               // of the document's list, when the tree was built
  std::vector<CProcViewIterator*> m_iterators;  // active: notified of removals
};
