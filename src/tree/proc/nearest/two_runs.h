// The point at which the numbers of a thread begin again, in each of its nodes.
//
// A restarted service numbers traces from 1 again. The traces of a thread are then in two runs of
// rising numbers. Only the nodes that were open at that moment have children of both runs: the
// thread, the block that was open in it, and so on down to the innermost one. For each of them this
// class stores how many of its children are of the first run.
//
// Example  "Begin: B" is 5. The service is restarted after 7. Below are the tree, and its nodes as
//          rows of children by number, with a bar where the second run begins:
//
//            thread                     thread    3  B5 | 4
//            |- a           3                         |
//            |- block B     5                         v
//            |  |- Begin    5           block B   5   7 | 1  2
//            |  |- b        7
//            |  |- c        1, new
//            |  `- End      2, new
//            `- d           4, new
//
//          On either side of a bar the numbers rise, so each side can be searched by binary search.
//          The order of the tree is: down on the left sides, 3 B5 and then 5 7, and up again on the
//          right sides, 1 2 and then 4. The nearest to 6 is found on the way down: 7 is the first
//          leaf above it, which ends the search in B; in the thread 4 is not above 6. For 3 the
//          leaf 5 ends the search in B; then 4, which is above 3 too, ends the search of the thread
//          and counts.
//
// Owner    Borrows the nodes, and must be notified when one is removed.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "tree/proc/nodes/nodes.h"

class TwoRuns {
 public:
  // The next trace of the thread begins the second run.
  explicit TwoRuns(const CProcessThread& thread);

  // How many of the node's children are of the first run. All of them in a node that was closed by
  // then. REQUIRES: the node itself is of the first run.
  std::size_t FirstRunOf(const CExecutionBlock& node) const;
  // The last child of the first run, if it was open when the second one began: it has children of
  // both. REQUIRES: so was the node.
  CExecutionBlock* OpenIn(const CExecutionBlock& node) const;
  // Did the block come before the second run? REQUIRES: it and the nodes above it are in the tree.
  bool IsOfFirstRun(const CExecutionBlock& block) const;

  // The child at this position has been removed.
  void OnErased(const CExecutionBlock& owner, std::size_t position);
  // The block will be destroyed.
  void OnDropped(const CExecutionBlock& block) { m_before.erase(&block); }

 private:
  bool WasOpen(const CExecutionBlock& node) const { return m_before.contains(&node); }

  // By nodes that were open: how many of their children came before the second run.
  std::unordered_map<const CExecutionBlock*, std::uint32_t> m_before;
};
