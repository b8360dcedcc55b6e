// The items of the tree view: made when their parent is opened or an item below is needed.
#include <vector>

#include "tree/proc/proc_view.h"
#include "tree/proc/proc_view_iterator.h"

TreeItem CProcView::InsertTreeItem(TreeItem parentItem, CTraceEvent& node) {
  const bool leaf = node.Kind() == NodeKind::Leaf;
  node.treeItem = m_tree->InsertItem(parentItem, reinterpret_cast<TreeItemData>(&node), !leaf);
  return node.treeItem;
}

bool CProcView::IsExpanded(TreeItem item) const {
  return (m_tree->ItemState(item) & kTreeExpanded) != 0;
}

// The control asks for the text when it needs it.
void CProcView::OnLabelChanged(CTraceEvent& node) {
  m_tree->ItemTextChanged(node.treeItem);
}

void CProcView::DeleteItem(TreeItem item) {
  for (CProcViewIterator* iterator : m_iterators) iterator->OnItemGone(item);
  m_tree->DeleteItem(item);
}

void CProcView::OnFirstMachine() {
  m_tree->SetRedraw(true);
}

bool CProcView::OnTreeItemExpanding(TreeItem item) {
  if (!Lacks(item)) return true;
  const CWaitCursor wait(GetHost());
  return FillWatched(item);
}

// Traces that came while an item was closed have no items; they are after the last child with one.
// Each opening adds them; if none came, a second opening adds nothing.
bool CProcView::Lacks(TreeItem item) const {
  const CTraceEvent* const node = NodeOf(item);
  if (!node || node->Kind() == NodeKind::Leaf) return false;
  const ChildList& children = static_cast<const CExecutionBlock*>(node)->children;
  return !children.empty() && !children.back()->treeItem;
}

ItemFill CProcView::FillOf(TreeItem item) {
  if (m_filtering && m_filtering->reach) m_filtering->reach->ForgetFill();
  return ItemFill(*this, item, static_cast<const CExecutionBlock*>(NodeOf(item))->children);
}

void CProcView::Fill(TreeItem item) {
  if (!Lacks(item)) return;
  ItemFill fill = FillOf(item);
  while (!fill.DoPart()) {
  }
}

// False when the user cancelled.
bool CProcView::FillWatched(TreeItem item) {
  if (m_inDrain) {
    Fill(item);
    return true;
  }
  ItemFill fill = FillOf(item);
  return RunWork("Opening...", fill);
}

bool CProcView::RunWork(const char* message, LongWork& work) {
  ++m_works;
  const bool done = RunLongWork(GetHost(), &m_document, {"Tessera", message}, work);
  --m_works;
  if (m_filtering) m_step.Ask();
  return done;
}

// A loop from the top down, because 100,000 nested blocks would need too much stack.
void CProcView::EnsureTreeItem(CTraceEvent& node) {
  if (node.treeItem) return;
  std::vector<CTraceEvent*> closed;  // parents whose children have no items, innermost first
  for (CTraceEvent* each = node.parent; each; each = each->parent) {
    closed.push_back(each);
    if (each->treeItem) break;
  }
  for (; !closed.empty() && closed.back()->treeItem; closed.pop_back()) {
    const TreeItem item = closed.back()->treeItem;
    if (Lacks(item) && !FillWatched(item)) return;
  }
}

TreeItem CProcView::NextTreeItem(TreeItem item) {
  Fill(item);
  if (const TreeItem child = m_tree->Walk(item, TreeStep::FirstChild)) return child;
  for (; item; item = m_tree->Walk(item, TreeStep::Parent))
    if (const TreeItem next = m_tree->Walk(item, TreeStep::NextSibling)) return next;
  return 0;
}

TreeItem CProcView::PrevTreeItem(TreeItem item) {
  TreeItem previous = m_tree->Walk(item, TreeStep::PreviousSibling);
  if (!previous) return m_tree->Walk(item, TreeStep::Parent);
  for (;;) {
    Fill(previous);
    const TreeItem last = m_tree->Walk(previous, TreeStep::LastChild);
    if (!last) return previous;
    previous = last;
  }
}

TreeItem CProcView::LastTreeItem() const {
  TreeItem last = 0;
  while (const TreeItem below = m_tree->Walk(last, TreeStep::LastChild)) last = below;
  return last;
}
