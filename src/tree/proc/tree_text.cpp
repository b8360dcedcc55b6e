#include "tree/proc/tree_text.h"

#include <vector>

namespace {

// A node with children, and which of them comes next.
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

// Loops, both: blocks may nest 100,000 deep.
void VisitTree(const TreeControl& tree, TreeItem item, TreeControlOwner& texts,
               const TreeLineTaker& take) {
  int depth = 0;
  for (;;) {
    const unsigned state = tree.ItemState(item);
    const bool open = state & kTreeExpanded;
    const bool closed = (state & kTreeHasChildren) && !open;
    if (!take(depth, closed, texts.TreeItemText(tree.ItemData(item)))) return;
    TreeItem next = open ? tree.Walk(item, TreeStep::FirstChild) : 0;
    if (next) {
      ++depth;
    } else {
      while (depth > 0 && !(next = tree.Walk(item, TreeStep::NextSibling))) {
        item = tree.Walk(item, TreeStep::Parent);
        --depth;
      }
    }
    if (!next) return;
    item = next;
  }
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
