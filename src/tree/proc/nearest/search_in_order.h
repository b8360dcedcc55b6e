// The search for the nearest trace by sequence number (find_node.h) in one thread whose numbers
// rise, in one run or two. It uses binary search on each level of blocks instead of a walk.
//
// Each search stores in `last` for which other numbers its result is valid too.
//
// Owner    Borrows the rows.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <vector>

#include "tree/proc/nearest/empty_fronts.h"
#include "tree/proc/nearest/find_node.h"
#include "tree/proc/nearest/thread_row.h"

class SearchInOrder {
 public:
  explicit SearchInOrder(EmptyFronts& empty) : m_empty(empty) {}

  // REQUIRES: the thread is rising; has two runs.
  NodePosition InOneRun(ThreadRow& row, LastFound& last, std::uint32_t wanted);
  NodePosition InTwoRuns(const ThreadRow& row, LastFound& last, std::uint32_t wanted);

 private:
  CExecutionBlock* DownToContent(CExecutionBlock* block);
  NodePosition Below(LastFound& last, CExecutionBlock* top, std::uint32_t wanted);
  NodePosition BelowChild(LastFound& last, const ChildList& children, std::size_t position,
                          std::uint32_t wanted);
  NodePosition DownFirstRuns(LastFound& last, const TwoRuns& runs, CExecutionBlock* node,
                             std::uint32_t wanted);
  NodePosition SecondRun(LastFound& last, const WalkFrame& frame, std::uint32_t wanted);
  NodePosition FirstBelow(LastFound& last, WalkFrame from, std::size_t end, std::uint32_t wanted);

  EmptyFronts& m_empty;
  std::vector<WalkFrame> m_passed, m_path, m_open;  // members, to keep their storage
};
