// What must hold of the items of a tree view at any moment.
#pragma once

#include <gtest/gtest.h>

#include <set>

#include "support/fake_tree_control.h"
#include "tree/proc/proc_view.h"

inline TreeItem NextThatExists(const TreeControl& tree, TreeItem item) {
  if (const TreeItem child = tree.Walk(item, TreeStep::FirstChild)) return child;
  for (; item; item = tree.Walk(item, TreeStep::Parent))
    if (const TreeItem next = tree.Walk(item, TreeStep::NextSibling)) return next;
  return 0;
}

inline std::vector<TreeItem> ItemsThatExist(const TreeControl& tree) {
  std::vector<TreeItem> items;
  for (TreeItem item = tree.Walk(0, TreeStep::FirstChild); item; item = NextThatExists(tree, item))
    items.push_back(item);
  return items;
}

// Those of a node's children stand in the control as in the model, from the first on.
inline void ExpectItemsInOrder(const FakeTreeControl& tree, const CExecutionBlock& node) {
  TreeItem item = tree.Walk(node.treeItem, TreeStep::FirstChild);
  const ChildList& children = node.children;
  for (std::size_t i = 0; i < children.size() && children[i]->treeItem; ++i) {
    // Items of nodes that were taken for hidden traces stand between them.
    while (item && item != children[i]->treeItem) item = tree.Walk(item, TreeStep::NextSibling);
    ASSERT_TRUE(item) << tree.Picture();
  }
  const bool open = tree.ItemState(node.treeItem) & kTreeExpanded;
  ASSERT_TRUE(!open || children.empty() || children.back()->treeItem) << tree.Picture();
}

// No item, and no selection, holds anything that has gone.
inline void ExpectLiveItems(const CProcView& view) {
  const auto& tree = static_cast<const FakeTreeControl&>(view.Tree());
  std::set<const TraceEvent_i*> live = {nullptr};
  view.Document().m_traces.ForEach(0, [&live](const TraceEvent_i* event) { live.insert(event); });
  ASSERT_TRUE(live.contains(view.CurrentEvent()));
  ASSERT_TRUE(live.contains(view.m_currentEvent));
  for (const TreeItem item : ItemsThatExist(tree)) {
    const CTraceEvent* const node = view.NodeOf(item);
    ASSERT_TRUE(node);
    ASSERT_EQ(node->treeItem, item);
    ASSERT_TRUE(live.contains(node->event));
    ASSERT_EQ(tree.Walk(item, TreeStep::Parent), node->parent ? node->parent->treeItem : 0);
    if (node->Kind() == NodeKind::Leaf) continue;
    ASSERT_NO_FATAL_FAILURE(ExpectItemsInOrder(tree, static_cast<const CExecutionBlock&>(*node)));
  }
}
