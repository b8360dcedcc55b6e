#include "tree/proc/nearest/thread_order.h"

#include <algorithm>
#include <utility>
#include <vector>

#include "tree/proc/nearest/find_node.h"

namespace {

// Do the numbers rise in the order of the tree? If so `last` becomes the last one. The leaf of a
// Begin has the number of its block.
bool AreRising(CProcessThread& thread, std::int64_t& last) {
  last = -1;
  std::vector<WalkFrame> path{{&thread}};
  while (!path.empty()) {
    const ChildList& children = path.back().node->children;
    const std::size_t position = path.back().position++;
    if (position >= children.size()) {
      path.pop_back();
      continue;
    }
    CExecutionBlock* const block = children.BlockAt(position);
    const std::int64_t number = NumberAt(children, position);
    const bool isOwnLeaf = position == 0 && !block && number == last;
    if (number <= last && !isOwnLeaf) return false;
    last = number;
    if (block) path.push_back({block});
  }
  return true;
}

}  // namespace

bool ThreadOrder::Note(const CProcessThread& thread, std::uint32_t number, std::uint64_t leaf) {
  const bool rises = number > m_last;
  m_last = number;
  if (rises) return false;
  m_runBegins = leaf;
  m_runs = m_rising ? std::make_unique<TwoRuns>(thread) : nullptr;
  return std::exchange(m_rising, false);
}

// By then everything before the run has been removed, except blocks that were left open.
bool ThreadOrder::Recover(CProcessThread& thread, std::uint64_t oldestLeaf,
                          std::uint64_t nextLeaf) {
  if (oldestLeaf < m_runBegins) return false;
  std::int64_t last = -1;
  m_rising = AreRising(thread, last);
  if (m_rising) {
    m_runs = nullptr;
    // The trace filed last may have been removed before a block with a greater number.
    m_last = std::max(m_last, last);
  } else {
    m_runBegins = nextLeaf;
  }
  return m_rising;
}
