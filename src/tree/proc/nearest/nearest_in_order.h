// The search for the nearest trace by sequence number (find_node.h) without a walk.
//
// Threads  Interface thread.
#pragma once

#include <algorithm>
#include <cstdint>
#include <vector>

#include "tree/proc/nearest/thread_orders.h"
#include "tree/proc/nearest/thread_walks.h"

// The result of FindNodeByWalk over the whole tree, when no leaf of the trace is in it. In threads
// whose numbers rise, in one run or two, the cost does not depend on how many traces there are:
// what a search in a thread has found holds for all numbers about the wanted one until something
// comes or goes there, and only then the thread is searched anew, by a binary search per level of
// blocks and run. A thread with more runs is walked, unless it is known to have nothing.
class NearestInOrder {
 public:
  // `block` is the one that the trace has opened, null for none.
  NodePosition Find(const CRoot& root, const TraceEvent_i& event, ThreadWalks& walks,
                    CExecutionBlock* block);
  // A thread is new, or its numbers have come into another order.
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
    bool rising, twoRuns;
    std::uint64_t from = 0, until = 0;
    std::uint64_t leaf = kNone;       // the nearest with a greater number
    std::uint64_t neighbour = kNone;  // before that leaf, with a number up to `from`

    void BeginSearch() {
      from = 0;
      until = leaf = neighbour = kNone;
    }
    // A number from this one up to the wanted one leads down the same way.
    void HoldsFrom(std::uint32_t number) { from = std::max<std::uint64_t>(from, number); }
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
  static NodePosition WalkThrough(Front& front, ThreadWalks& walks, std::uint32_t wanted);
  NodePosition SearchBelow(Front& front, CExecutionBlock* top, std::uint32_t wanted);
  NodePosition SearchTwoRuns(Front& front, std::uint32_t wanted);
  NodePosition SearchSecondRun(Front& front, const WalkFrame& frame, std::uint32_t wanted);
  static NodePosition StopAt(Front& front, NodePosition place, std::uint32_t wanted);
  NodePosition FirstBelow(Front& front, WalkFrame from, std::size_t end, std::uint32_t wanted);

  std::vector<Front> m_fronts;          // in the order of the tree
  bool m_complete = true;               // else there are threads that it lacks
  std::uint64_t m_nothingFrom = kNone;  // from this number on no thread has anything
  std::vector<WalkFrame> m_passed, m_path, m_open;
};
