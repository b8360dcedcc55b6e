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

// REQUIRES: position < size().
std::uint32_t NumberAt(const ChildList& children, std::size_t position);

// Visits all nodes before the result. Gives what it gives in any order of sequence numbers.
NodePosition FindNodeByWalk(CExecutionBlock& top, const TraceEvent_i& event);
// The leaf of the trace in a thread whose numbers rise; nothing when it is not in the tree. Then
// `opened` is the block that the trace has opened there, null for none.
NodePosition FindLeafInOrder(CProcessThread& thread, const TraceEvent_i& event,
                             CExecutionBlock*& opened);

// How far a walk has come in one node's children.
struct WalkFrame {
  CExecutionBlock* node;
  std::size_t position = 0;
  NodePosition best = {};
};

// The same result, when no leaf of the trace is in the tree. In threads whose numbers rise its cost
// does not depend on how many traces there are: what a search in a thread has found holds for all
// numbers about the wanted one until something comes or goes there, and only then the thread is
// searched anew, by a binary search per level of blocks. Any other thread is walked, unless it is
// known to have nothing.
class NearestInOrder {
 public:
  // `block` is the one that the trace has opened, null for none.
  NodePosition Find(const CRoot& root, const TraceEvent_i& event, CExecutionBlock* block);
  // A thread is new, or has lost its order or found it again.
  void OnThreadsChanged() { m_complete = false; }
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
    bool rising;
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
  static NodePosition WalkThrough(Front& front, const TraceEvent_i& event, std::uint32_t wanted);
  static NodePosition StopAt(Front& front, NodePosition place, std::uint32_t wanted);
  NodePosition FirstBelow(Front& front, WalkFrame from, std::uint32_t wanted);

  std::vector<Front> m_fronts;          // in the order of the tree
  bool m_complete = true;               // else there are threads that it lacks
  std::uint64_t m_nothingFrom = kNone;  // from this number on no thread has anything
  std::vector<WalkFrame> m_passed, m_path;
};
