// A model beside the plain tree: the same nodes in the same order, with the same labels and traces.
#pragma once

#include <gtest/gtest.h>

#include "tree/proc/model/plain_tree.h"
#include "tree/proc/model/proc_model.h"

// `look` is called with each node below these and its label.
template <class Look>
void ExpectSameNodes(const ProcModel& model, const CExecutionBlock& node, PlainTree& tree,
                     PlainTree::Node& plain, const Look& look) {
  ASSERT_EQ(node.children.size(), plain.children.size());
  EXPECT_EQ(node.duration, plain.duration);
  for (std::size_t i = 0; i < node.children.size(); ++i) {
    PlainTree::Node& plainChild = *plain.children[i];
    CTraceEvent& child = *node.children[i];
    const std::string label = tree.Label(plainChild);
    ASSERT_EQ(model.NodeLabel(child), label);
    ASSERT_EQ(child.event, plainChild.event);
    look(child, label);
    const CExecutionBlock* const block = node.children.BlockAt(i);
    ASSERT_EQ(block == nullptr, plainChild.kind == 'l');
    if (block) ExpectSameNodes(model, *block, tree, plainChild, look);
    if (testing::Test::HasFatalFailure()) return;
  }
}
