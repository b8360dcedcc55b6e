// The search for the leaf of a trace, or for the nearest by sequence number.
//
// The rules, for the children of one node in their order: a node with children gives what is found
// below it, and of several such near hits the nearer one counts, the earlier on a tie. A leaf with
// a greater number than the wanted one ends the search: it counts if it stands first or is not
// farther than its neighbour before, else that neighbour counts, which may be a block. Leaves with
// smaller numbers never count.
//
// Threads  Interface thread.
#pragma once

#include "tree/proc/nodes.h"

// A place in some node's children.
struct NodePosition {
  CExecutionBlock* owner = nullptr;  // null: there is nothing
  std::size_t position = 0;
  explicit operator bool() const { return owner != nullptr; }
  CTraceEvent* Node() const { return owner->children[position]; }
  bool operator==(const NodePosition&) const = default;
};

// By the record where there is one.
std::uint32_t SequenceNumberOf(const TraceEvent_i& event);

// Visits all nodes before the result. Gives what it gives in any order of sequence numbers.
NodePosition FindNodeByWalk(CExecutionBlock& top, const TraceEvent_i& event);
// The same result, when no leaf of the trace is there and the traces were filed in rising order of
// sequence numbers, at a cost that does not depend on how many there are: for the model's oldest
// and newest traces a step per level, in between a binary search per level. `block` is the one that
// the trace has made, null for none.
NodePosition FindNearestInOrder(CRoot& root, const TraceEvent_i& event, CExecutionBlock* block);
// The position of a child whose siblings were filed in that order.
std::size_t PositionInOrder(const CExecutionBlock& owner, const CTraceEvent& child);
