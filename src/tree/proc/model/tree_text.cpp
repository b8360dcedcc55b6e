#include "tree/proc/model/tree_text.h"

#include <vector>

namespace {

// A node with children, and the index of its next child.
struct Opened {
  const ChildList* children;
  std::size_t next;
};

const ChildList* ChildrenOf(const CTraceEvent& node) {
  if (node.Kind() == NodeKind::Leaf) return nullptr;
  const ChildList& children = static_cast<const CExecutionBlock&>(node).children;
  return children.empty() ? nullptr : &children;
}

}  // namespace

void AppendTreeLine(std::string& out, int depth, bool closed, std::string_view text) {
  for (int level = 0; level < depth; ++level) out += "|   ";
  out += closed ? "+- " : "|- ";
  out += text;
}

bool TreeLines::Next(std::string& out) {
  if (!m_item) return false;
  const unsigned state = m_tree.ItemState(m_item);
  const bool open = state & kTreeExpanded;
  const bool closed = (state & kTreeHasChildren) && !open;
  AppendTreeLine(out, m_depth, closed, m_texts.TreeItemText(m_tree.ItemData(m_item)));
  ++m_written;
  Step(open);
  return true;
}

// A loop, like the one below, because blocks may nest 100,000 deep.
void TreeLines::Step(bool open) {
  TreeItem next = open ? m_tree.Walk(m_item, TreeStep::FirstChild) : 0;
  if (next) {
    ++m_depth;
  } else {
    while (m_depth > 0 && !(next = m_tree.Walk(m_item, TreeStep::NextSibling))) {
      m_item = m_tree.Walk(m_item, TreeStep::Parent);
      --m_depth;
    }
  }
  m_item = next;
}

std::optional<int> TreeLines::Progress() const {
  return Thousandths(static_cast<std::uint64_t>(m_written), static_cast<std::uint64_t>(m_rows));
}

void VisitNodes(const ProcModel& model, const CTraceEvent& top, int levels,
                const TreeLineTaker& take) {
  std::vector<Opened> path;
  const CTraceEvent* node = &top;
  for (;;) {
    const int depth = static_cast<int>(path.size());
    const ChildList* const children = ChildrenOf(*node);
    const bool open = children && depth < levels;
    if (!take(depth, children && !open, model.NodeLabel(*node))) return;
    if (open) path.push_back({children, 0});
    while (!path.empty() && path.back().next == path.back().children->size()) path.pop_back();
    if (path.empty()) return;
    node = (*path.back().children)[path.back().next++];
  }
}
