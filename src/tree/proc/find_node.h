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

#include <algorithm>
#include <cstdint>
#include <vector>

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
// The position of a child whose siblings were filed in that order.
std::size_t PositionInOrder(const CExecutionBlock& owner, const CTraceEvent& child);

// How far a walk has come in one node's children.
struct WalkFrame {
  CExecutionBlock* node;
  std::size_t position = 0;
  NodePosition best = {};
};

// The same result, when no leaf of the trace is in the tree and the traces were filed in rising
// order of sequence numbers, at a cost that does not depend on how many there are: a binary search
// per level of blocks, and that only in threads that may have something nearer than the others.
class NearestInOrder {
 public:
  // `block` is the one that the trace has opened, null for none; `newest` the number of the trace
  // that was filed last.
  NodePosition Find(const CRoot& root, const TraceEvent_i& event, CExecutionBlock* block,
                    std::uint32_t newest);
  void OnNewThread() { m_complete = false; }
  // A child of a thread or block has gone.
  void OnErased(CExecutionBlock& owner);
  void Clear();

 private:
  // What the last search in a thread has seen. Until a child goes there, a search for a number from
  // `from` on finds nothing with a number below `above` but for nodes up to `below`.
  struct Front {
    CExecutionBlock* thread;
    std::uint64_t from = 0, above = 0;
    std::int64_t below = -1;         // -1: none
    std::uint64_t nothingUntil = 0;  // it found nothing, and will not before a trace of this number

    void Forget() { above = nothingUntil = 0; }
    // Nothing there is nearer.
    std::uint64_t AtLeast(std::uint64_t wanted, std::uint64_t newest) const {
      if (wanted >= from && nothingUntil > newest) return UINT64_MAX;
      if (wanted < from || wanted >= above) return 0;
      const std::uint64_t behind = above - wanted;
      return below < 0 ? behind : std::min(behind, wanted - static_cast<std::uint64_t>(below));
    }
  };
  void Collect(const CRoot& root);
  NodePosition Below(Front& front, std::uint32_t wanted, std::uint32_t newest);
  NodePosition FirstBelow(WalkFrame from, std::uint32_t wanted);

  std::vector<Front> m_fronts;  // in the order of the tree
  bool m_complete = true;       // else there are threads that it lacks
  std::vector<WalkFrame> m_passed, m_path;
};
