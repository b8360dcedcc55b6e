// The objects that the tree view's commands work on.
//
// Kept: without a selected item the state of Properties and Goto Source stays as it was. Safe: the
// commands then do nothing.
#include "tree/proc/proc_view.h"
#include "tree/proc/proc_view_iterator.h"

// A node whose trace has been trimmed has no properties.
std::unique_ptr<CTraceIterator> CProcView::MakeIterator() {
  if (!CurrentEvent()) return nullptr;
  return std::make_unique<CProcViewIterator>(*this, m_tree->SelectedItem());
}

// Kept: only plain traces have a source here; a block has none, though a trace made it.
const TraceEvent_i* CProcView::SourceEvent() const {
  const CTraceEvent* const node = NodeOf(m_tree->SelectedItem());
  return node && node->Kind() == NodeKind::Leaf ? node->event : nullptr;
}
