// The search for the leaf of a trace, or for the nearest leaf by sequence number.
//
// The rules, for the children of one node in their order: A node with children gives the result
// from below it. Of several such near hits the nearest one counts, the earlier one on a tie. A leaf
// with a greater number than the wanted one ends the search. It counts if it is the first child or
// is not farther than the child before it; otherwise that child counts, which may be a block.
// Leaves with smaller numbers never count.
//
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tree/proc/nodes/nodes.h"

// A place in some node's children.
struct NodePosition {
  CExecutionBlock* owner = nullptr;  // null: nothing was found
  std::size_t position = 0;
  explicit operator bool() const { return owner != nullptr; }
  CTraceEvent* Node() const { return owner->children[position]; }
  bool operator==(const NodePosition&) const = default;
};

// Reads the record if there is one.
std::uint32_t SequenceNumberOf(const TraceEvent_i& event);

// REQUIRES: position < size().
std::uint32_t NumberAt(const ChildList& children, std::size_t position);

// The first of the children [begin, end), whose numbers rise, with a number above the wanted one;
// `end` if there is none. Doubles its steps from the front, because most searches end there.
std::size_t FirstAbove(const ChildList& children, std::uint32_t wanted, std::size_t begin,
                       std::size_t end);

// The progress of a walk in one node's children.
struct WalkFrame {
  CExecutionBlock* node;
  std::size_t position = 0;
  NodePosition best = {};
};

// The search without any order of sequence numbers: visits all nodes before the result.
class NodeWalk {
 public:
  NodeWalk(CExecutionBlock& top, const TraceEvent_i& event);

  // Visits so many further nodes; true when the walk has ended.
  bool Go(std::size_t nodes);
  NodePosition Found() const { return m_found; }

 private:
  bool Step();

  const TraceEvent_i& m_event;
  const std::uint32_t m_wanted;
  std::vector<WalkFrame> m_path;
  NodePosition m_found;
};
// The whole walk in one call.
NodePosition FindNodeByWalk(CExecutionBlock& top, const TraceEvent_i& event);

// The distance of the found number from the wanted one.
std::uint32_t Distance(NodePosition found, std::uint32_t wanted);
// A near hit replaces an earlier one only if it is nearer.
NodePosition Nearer(NodePosition earlier, NodePosition later, std::uint32_t wanted);
// The end of the search at the first leaf with a greater number than the wanted one.
NodePosition StopAtLeaf(CExecutionBlock& owner, std::size_t position, std::uint32_t wanted);
