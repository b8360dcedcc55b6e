// How many children at the front of a node have nothing below them and never will. Trims of hidden
// traces empty the blocks at the front of a thread long before these blocks are removed. A search
// skips them with this count.
//
// Owner    Borrows the nodes, and must be notified when a child is removed. Only nodes with such
//          children have a row, so a block that is destroyed when it is empty leaves none.
// Threads  Interface thread.
#pragma once

#include <cstddef>
#include <cstdint>
#include <unordered_map>

#include "tree/proc/nodes/nodes.h"

class EmptyFronts {
 public:
  // Counts them, continuing at the end of the last count.
  std::size_t Count(const CExecutionBlock& node);

  // The child at this position has been removed.
  void OnErased(const CExecutionBlock& owner, std::size_t position);
  void Clear() { m_counts.clear(); }

 private:
  std::size_t CountedOf(const CExecutionBlock& node) const;
  bool IsEmpty(const CExecutionBlock& block) const;

  std::unordered_map<const CExecutionBlock*, std::uint32_t> m_counts;
};
