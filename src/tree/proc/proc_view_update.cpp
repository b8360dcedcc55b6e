// How the tree view follows its document: the hints and what they make of tree and selection.
#include <algorithm>

#include "documents/trace_panes.h"
#include "tree/proc/proc_view.h"
#include "tree/proc/proc_view_iterator.h"

void CProcView::OnUpdate(CView*, unsigned hint, CObject* object) {
  const auto* traces = dynamic_cast<const CTraceHint*>(object);
  switch (hint) {
    case kHintReady:
      m_currentEvent = nullptr;
      RebuildTree();
      break;
    case kHintAdded:
      if (traces) AddTraces(*traces);
      break;
    case kHintTrimmed:
      if (traces) RemoveTraces(*traces);
      break;
    case kHintFollow:
      if (traces && !traces->m_events.empty()) FollowTrace(*traces->m_events.front());
      break;
    default:  // the tree has no columns for 1001
      break;
  }
}

void CProcView::RebuildTree() {
  CWaitCursor wait(GetHost());
  // The nodes' traces are gone when the list has been cleared since they were filed.
  const std::uint64_t generation = m_document.m_traces.Generation();
  TraceEvent_i* const remembered = generation == m_generation ? CurrentEvent() : nullptr;
  m_generation = generation;
  m_tree->SetRedraw(false);
  for (CProcViewIterator* iterator : m_iterators) iterator->OnItemsGone();
  m_tree->DeleteItem(0);
  m_model.Clear();
  m_model.AddAll();
  if (remembered) {
    CTraceHint hint(remembered);
    OnUpdate(this, kHintFollow, &hint);
  }
  if (m_active) TellStatus();
  m_tree->SetRedraw(true);
}

void CProcView::AddTraces(const CTraceHint& hint) {
  const ProcModel::Batch batch(m_model);
  for (TraceEvent_i* event : hint.m_events) {
    if (const TreeItem item = m_model.AddTrace(event, true)) FollowTail(item);
    // Kept: once for each trace, also for one that the filter hides.
    if (m_active) TellRowCount(GetHost(), m_model.TraceCount());
  }
}

void CProcView::RemoveTraces(const CTraceHint& hint) {
  if (hint.m_events.empty()) return;
  if (std::find(hint.m_events.begin(), hint.m_events.end(), m_currentEvent) != hint.m_events.end())
    m_currentEvent = nullptr;
  for (CProcViewIterator* iterator : m_iterators) iterator->OnTracesGone(hint);
  m_tree->SetRedraw(false);
  m_model.RemoveTraces(hint.m_events);
  m_tree->SetRedraw(true);
  // Kept: what goes is not taken off the count.
  if (m_active) TellRowCount(GetHost(), m_model.TraceCount());
  // Kept: at every trim the selection jumps to what is nearest to the oldest trace that goes. It is
  // still good here: the document releases it behind the hint.
  FollowTrace(*hint.m_events.front());
}

void CProcView::FollowTrace(const TraceEvent_i& target) {
  CWaitCursor wait(GetHost());
  const NodePosition place = m_model.FindNode(target);
  if (!place) return;
  CTraceEvent& node = *place.Node();
  EnsureTreeItem(node);
  if (node.treeItem) Show(node.treeItem);
}

// The tree scrolls along with a live stream only if the user looks at the tail.
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
