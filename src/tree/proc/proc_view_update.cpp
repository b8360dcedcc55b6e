// Updates the tree view after hints of its document: the tree and the selection.
#include <utility>

#include "docview/commands/command_ids.h"
#include "docview/frame.h"
#include "settings/globals.h"
#include "tree/proc/counted_tree_traces.h"
#include "tree/proc/model/node_search.h"
#include "tree/proc/model/proc_build.h"
#include "tree/proc/proc_view.h"
#include "tree/proc/proc_view_iterator.h"

void CProcView::OnReady() {
  m_currentEvent = nullptr;
  const bool filtered = m_filtering != nullptr;
  EndFiltering(true);
  if (filtered && m_onStatus) m_onStatus();
  if (!RebuildTree()) LeaveEmptyTree();
}

bool CProcView::RebuildTree() {
  const CWaitCursor wait(GetHost());
  for (;;) {
    EmptyIfCleared();
    const bool utc = g_useUtc;
    auto model = std::make_unique<ProcModel>(m_document, m_filter);
    const auto build = [&] {
      ProcBuild pass(m_document, *model);
      return RunTracePass(m_document, "Building the procedure tree...", pass);
    };
    switch (build()) {
      case PassResult::Whole:
        m_utc = utc;
        TakeOver(std::move(model));
        return true;
      case PassResult::Cancelled:
        return false;
      case PassResult::Void:
        break;
    }
  }
}

// If the list was cleared since the traces were filed, they have been released.
void CProcView::EmptyIfCleared() {
  if (m_document.m_traces.Generation() == m_generation) return;
  m_generation = m_document.m_traces.Generation();
  m_built = false;
  for (CProcViewIterator* iterator : m_iterators) iterator->OnItemsGone();
  m_tree->DeleteItem(0);
  m_model->Clear();
}

// Gives the tree that was shown.
std::unique_ptr<ProcModel> CProcView::ReplaceTree(std::unique_ptr<ProcModel> model) {
  m_tree->SetRedraw(false);
  for (CProcViewIterator* iterator : m_iterators) iterator->OnItemsGone();
  m_tree->DeleteItem(0);
  m_model.swap(model);
  m_model->ShowBy(*this);
  m_built = true;
  m_tree->SetRedraw(true);
  if (m_hitCount) m_hitCount->OnAnew();
  return model;
}

void CProcView::TakeOver(std::unique_ptr<ProcModel> model) {
  TraceEvent_i* const remembered = CurrentEvent();
  ReplaceTree(std::move(model));
  ReportStatus();
  // Last: the search for the node may show a box, and below it the new tree is painted.
  if (remembered) GoTo(this, remembered);
}

// The user must not take an empty tree for that of the document: the frame goes back to the list,
// and the next toggle builds the tree again.
void CProcView::LeaveEmptyTree() {
  CFrameWnd* const frame = GetParentFrame();
  if (frame && GetDlgCtrlID() == kMainPane) frame->OnCommand(ID_VIEW_PROC);
}

void CProcView::AddTraces(const CTraceHint& hint) {
  if (!m_built) return;
  if (m_hitCount) m_hitCount->OnAdded();
  if (m_filtering && m_filtering->reach) m_filtering->reach->FinishSearch();
  if (m_filtering && m_filtering->pass) m_filtering->pass->Add(hint);
  const ProcModel::Batch batch(*m_model);
  for (TraceEvent_i* event : hint.m_events) {
    if (const TreeItem item = m_model->AddTrace(event, true)) FollowTail(item);
    // Kept: once for each trace, also for one that the filter hides.
    ReportCount();
  }
}

void CProcView::RemoveTraces(const CTraceHint& hint) {
  if (hint.m_events.empty() || !m_built) return;
  for (CProcViewIterator* iterator : m_iterators) iterator->OnTracesGone(hint);
  if (m_hitCount) m_hitCount->OnRemoved(0, CountedTreeTraces::OldestIn(m_document, hint));
  if (m_filtering) BeforeRemoval(hint);
  m_tree->SetRedraw(false);
  m_model->RemoveTraces(hint.m_events);
  m_tree->SetRedraw(true);
  // Kept: removed traces are not subtracted from the count.
  ReportCount();
  // Kept: at every trim the selection moves to the node that is nearest to the oldest removed
  // trace. That trace is still valid here: the document releases it after the hint.
  m_inDrain = true;
  FollowTrace(this, *hint.m_events.front());
  m_inDrain = false;
}

// None when the user cancelled.
std::optional<NodePosition> CProcView::PlaceOf(const TraceEvent_i& target) {
  if (m_inDrain) return m_model->FindNode(target);
  NodeSearch search(*m_model, target);
  if (!RunWork("Looking for the trace...", search)) return std::nullopt;
  return search.Place();
}

void CProcView::FollowTrace(CView*, const TraceEvent_i& target) {
  if (m_filtering && !m_filtering->pass && !m_inDrain) return FollowInSteps(&target);
  const CWaitCursor wait(GetHost());
  const std::optional<NodePosition> place = PlaceOf(target);
  if (!place || !*place) return;
  CTraceEvent& node = *place->Node();
  EnsureTreeItem(node);
  if (node.treeItem) Show(node.treeItem);
}

// The tree scrolls with a live stream only if its last row is visible.
void CProcView::FollowTail(TreeItem item) {
  const TreeItem parent = m_tree->Walk(item, TreeStep::Parent);
  if (!parent || !IsExpanded(parent)) return;
  const TreeItem above = m_tree->Walk(item, TreeStep::PreviousVisible);
  if (!above) return;
  if (above != parent && m_tree->Walk(above, TreeStep::Parent) != parent) return;
  if (m_tree->IsOnScreen(above)) m_tree->EnsureVisible(item);
}

void CProcView::Show(TreeItem item) {
  m_tree->SelectItem(item);
  m_tree->EnsureVisible(item);
}
