// The walks through threads without order that one search needs. Each is done once, either
// immediately or in parts, between two tries of the search.
//
// In parts: a try asks for walks, and continues without those that are not done. While some are
// missing its result is not used: they are done, and the search is tried again.
//
// Owner    Borrows trace and threads. REQUIRES: nothing changes in the threads meanwhile.
// Threads  Interface thread.
#pragma once

#include <optional>
#include <utility>
#include <vector>

#include "tree/proc/nearest/find_node.h"

class ThreadWalks {
 public:
  enum class Way { AtOnce, InParts };
  ThreadWalks(const TraceEvent_i& event, Way way) : m_event(event), m_way(way) {}

  // The result of the walk through the thread; none while it is not done.
  std::optional<NodePosition> Through(CExecutionBlock& thread);
  bool AnyLeft() const { return !m_left.empty(); }
  // Does a part of the missing walks.
  void DoPart();
  // The number of visited nodes.
  std::size_t Visited() const { return m_visited; }

 private:
  const TraceEvent_i& m_event;
  const Way m_way;
  std::vector<std::pair<const CExecutionBlock*, NodePosition>> m_done;
  std::vector<std::pair<const CExecutionBlock*, NodeWalk>> m_left;
  std::size_t m_visited = 0;
};
