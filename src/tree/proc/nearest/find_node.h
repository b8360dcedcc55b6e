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

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tree/proc/nodes/nodes.h"

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

// REQUIRES: position < size().
std::uint32_t NumberAt(const ChildList& children, std::size_t position);

// The first of the children [begin, end), whose numbers rise, with one above the wanted one; `end`
// for none. Doubles its steps from the front, where most searches end.
std::size_t FirstAbove(const ChildList& children, std::uint32_t wanted, std::size_t begin,
                       std::size_t end);

// How far a walk has come in one node's children.
struct WalkFrame {
  CExecutionBlock* node;
  std::size_t position = 0;
  NodePosition best = {};
};

// The search without any order of sequence numbers: visits all nodes before the result.
class NodeWalk {
 public:
  NodeWalk(CExecutionBlock& top, const TraceEvent_i& event);

  // Goes on by so many nodes; true when it has ended.
  bool Go(std::size_t nodes);
  NodePosition Found() const { return m_found; }

 private:
  bool Step();

  const TraceEvent_i& m_event;
  const std::uint32_t m_wanted;
  std::vector<WalkFrame> m_path;
  NodePosition m_found;
};
// At once.
NodePosition FindNodeByWalk(CExecutionBlock& top, const TraceEvent_i& event);

// How far the number of what was found is from the wanted one.
std::uint32_t Distance(NodePosition found, std::uint32_t wanted);
// A near hit replaces an earlier one only if it is nearer.
NodePosition Nearer(NodePosition earlier, NodePosition later, std::uint32_t wanted);
// The end of the search at the first leaf with a greater number than the wanted one.
NodePosition StopAtLeaf(CExecutionBlock& owner, std::size_t position, std::uint32_t wanted);
