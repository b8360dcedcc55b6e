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
// order of sequence numbers, at a cost that does not depend on how many there are: what a search in
// a thread has found holds for all numbers about the wanted one until something comes or goes
// there, and only then the thread is searched anew, by a binary search per level of blocks.
class NearestInOrder {
 public:
  // `block` is the one that the trace has opened, null for none.
  NodePosition Find(const CRoot& root, const TraceEvent_i& event, CExecutionBlock* block);
  void OnNewThread() { m_complete = false; }
  void OnAppended(const CProcessThread& thread);
  void OnClosed(const CExecutionBlock& block);
  // A child of a thread or block has gone.
  void OnErased(const CExecutionBlock& owner);
  void Clear();

 private:
  static constexpr std::uint64_t kNone = UINT64_MAX;

  // What the last search in a thread has found, for the numbers from `from` up to before `until`.
  struct Front {
    CExecutionBlock* thread;
    // An open block, or the thread: nothing outside it counts, and while it is open nothing comes
    // there. So a chain of open blocks that have nothing but one another is walked down once.
    CExecutionBlock* start;
    std::uint64_t from = 0, until = 0;
    std::uint64_t leaf = kNone;       // the nearest with a greater number
    std::uint64_t neighbour = kNone;  // before that leaf, with a number up to `from`

    void Forget() { until = 0; }
    bool Knows(std::uint64_t wanted) const { return wanted >= from && wanted < until; }
    bool FoundNothing() const { return leaf == kNone && until == kNone; }
    std::uint64_t DistanceFrom(std::uint64_t wanted) const {
      const std::uint64_t above = leaf == kNone ? kNone : leaf - wanted;
      return neighbour == kNone ? above : std::min(above, wanted - neighbour);
    }
  };
  void Collect(const CRoot& root);
  NodePosition Search(Front& front, std::uint32_t wanted);
  static NodePosition StopAt(Front& front, NodePosition place, std::uint32_t wanted);
  NodePosition FirstBelow(Front& front, WalkFrame from, std::uint32_t wanted);

  std::vector<Front> m_fronts;          // in the order of the tree
  bool m_complete = true;               // else there are threads that it lacks
  std::uint64_t m_nothingFrom = kNone;  // from this number on no thread has anything
  std::vector<WalkFrame> m_passed, m_path;
};
