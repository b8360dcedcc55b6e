// How many children at the front of a node have nothing below them and never will. Hidden traces
// that are trimmed empty the blocks at the front of a thread long before those go: a search passes
// over them at once.
//
// Owner    Borrows the nodes, and is told when one goes. Only nodes with such children have a row.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "tree/proc/nodes/nodes.h"

class EmptyFronts {
 public:
  // Counts them, on from where the count of the last time ended.
  std::size_t Count(const CExecutionBlock& node);

  // The child at this position has gone.
  void OnErased(const CExecutionBlock& owner, std::size_t position);
  // The block is about to go.
  void OnDropped(const CExecutionBlock& block);
  void Clear() { m_counts.clear(); }

 private:
  std::size_t CountedOf(const CExecutionBlock& node) const;
  bool IsEmpty(const CExecutionBlock& block) const;

  std::unordered_map<const CExecutionBlock*, std::uint32_t> m_counts;
};
