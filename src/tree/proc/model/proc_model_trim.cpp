// The removal of the document's oldest traces from the procedure tree, and of nodes with them.
#include "documents/trace_doc.h"
#include "tree/proc/model/proc_model.h"

namespace {

// The block that the leaf's own trace opened; null if the leaf is not the first of a block.
CExecutionBlock* BlockOpenedWith(const CTraceEvent& leaf) {
  CExecutionBlock* const owner = leaf.parent;
  return owner->Kind() == NodeKind::Block && owner->event == leaf.event ? owner : nullptr;
}

}  // namespace

void ProcModel::RemoveTraces(const std::deque<TraceEvent_i*>& events, Hidden hidden) {
  m_search.Recover(m_leaves.Oldest(), m_leaves.Next());
  // A trim has the document's oldest traces. Only for other traces the model must search.
  const TraceList_t& held = m_document.m_traces;
  std::size_t position = 0;
  bool oldest = true;
  for (const TraceEvent_i* const event : events) {
    oldest = oldest && position < held.size() && held[position] == event;
    ++position;
    RemoveOne(*event, oldest, hidden);
  }
  m_labels.SetWaiting();
  m_labels.SetLevels(m_root);
}

// Kept: a trace that is not in the tree removes the nearest node from it. Safe: that node keeps its
// trace, its children and its item.
void ProcModel::RemoveOne(const TraceEvent_i& event, bool oldest, Hidden hidden) {
  const std::size_t position = FindLeaf(event, oldest);
  const bool hasLeaf = position < m_leaves.size();
  // Without a leaf it has made no node either.
  if (!hasLeaf && hidden == Hidden::TakesNothing) return;
  if (!hasLeaf || !IsInTree(*m_leaves[position])) {
    CExecutionBlock* const opened = hasLeaf ? BlockOpenedWith(*m_leaves[position]) : nullptr;
    ThreadWalks walks(event, ThreadWalks::Way::AtOnce);
    if (const NodePosition place = m_search.FindNearest(m_root, event, walks, opened))
      TakeOut(place);
  }
  if (hasLeaf) RemoveLeaf(position);
  ForgetTrace(event, oldest);
}

// The position in m_leaves; its size if there is none.
std::size_t ProcModel::FindLeaf(const TraceEvent_i& event, bool oldest) const {
  const std::size_t all = m_leaves.size();
  if (all == 0 || m_leaves[0]->event == &event) return 0;
  if (oldest) return all;
  std::size_t position = 0;
  while (position < all && m_leaves[position]->event != &event) ++position;
  return position;
}

bool ProcModel::IsInTree(const CTraceEvent& leaf) const {
  return !leaf.parent->unreachable && !m_takenOutLeaves.contains(&leaf);
}

NodePosition ProcModel::FindNode(const TraceEvent_i& event) {
  ThreadWalks walks(event, ThreadWalks::Way::AtOnce);
  return FindNode(event, walks);
}

NodePosition ProcModel::FindNode(const TraceEvent_i& event, ThreadWalks& walks) {
  m_search.Recover(m_leaves.Oldest(), m_leaves.Next());
  CProcessThread* const thread = m_levels.FindThread(TraceFacts(event).ThreadKey());
  return m_search.Find(m_root, thread, event, walks);
}

void ProcModel::TakeOut(NodePosition place) {
  CTraceEvent* const node = place.Node();
  CExecutionBlock* const block = place.owner->children.BlockAt(place.position);
  EraseChild(place);
  ++place.owner->hanging;
  if (!block) {
    m_takenOutLeaves.insert(node);
    return;
  }
  block->takenOut = true;
  std::vector<CExecutionBlock*> nodes{block};
  while (!nodes.empty()) {
    CExecutionBlock& below = *nodes.back();
    nodes.pop_back();
    below.unreachable = true;
    for (std::size_t i = 0; i < below.children.size(); ++i)
      if (CExecutionBlock* const child = below.children.BlockAt(i)) nodes.push_back(child);
  }
}

// Removes the leaf of a trace.
void ProcModel::RemoveLeaf(std::size_t position) {
  CTraceEvent& leaf = *m_leaves[position];
  CExecutionBlock* const owner = leaf.parent;
  if (!m_takenOutLeaves.empty() && m_takenOutLeaves.erase(&leaf) > 0) {
    --owner->hanging;
  } else {
    EraseChild({owner, owner->children.PositionOf(&leaf)});
  }
  if (leaf.treeItem) m_items->DeleteItem(leaf.treeItem);
  leaf.Clear();
  // A leaf that is not the oldest leaves an empty place until all older ones are removed.
  while (!m_leaves.empty() && !m_leaves[0]->event) m_leaves.PopFront();
  DropIfSpent(owner);
}

void ProcModel::EraseChild(NodePosition place) {
  CExecutionBlock& owner = *place.owner;
  if (owner.children.size() == 1) ProcLabels::KeepLabel(owner);
  owner.children.Erase(place.position);
  m_search.OnErased(owner, place.position);
  // The label of a block depends on its first child.
  if (place.position == 0 && owner.Kind() == NodeKind::Block) m_labels.SetLater(owner);
}

// The nodes that the trace made stay without it.
void ProcModel::ForgetTrace(const TraceEvent_i& event, bool oldest) {
  const auto forget = [this](CExecutionBlock& node) {
    ProcLabels::KeepText(node);
    node.event = nullptr;
    DropIfSpent(&node);
  };
  while (!m_made.empty() && m_made.front()->event == &event) {
    CExecutionBlock& node = *m_made.front();
    m_made.pop_front();
    forget(node);
  }
  if (oldest) return;
  for (std::size_t i = 0; i < m_made.size();) {
    CExecutionBlock& node = *m_made[i];
    if (node.event == &event) {
      m_made.erase(m_made.begin() + static_cast<std::ptrdiff_t>(i));
      forget(node);
    } else {
      ++i;
    }
  }
}

// Removes a closed block that has no trace of its own and no children, and then perhaps its parent.
// So a monitor of many days does not fill with empty blocks.
void ProcModel::DropIfSpent(CExecutionBlock* block) {
  while (block->closed && !block->event && block->children.empty() && block->hanging == 0) {
    CExecutionBlock* const parent = block->parent;
    if (block->takenOut) {
      --parent->hanging;
    } else {
      EraseChild({parent, parent->children.PositionOf(block)});
    }
    if (block->treeItem) m_items->DeleteItem(block->treeItem);
    m_labels.Forget(*block);
    m_search.OnDropped(*block);
    block->children.Clear(m_words);
    m_blocks.Drop(*block);
    block = parent;
  }
}
