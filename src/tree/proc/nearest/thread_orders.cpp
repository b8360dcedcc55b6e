#include "tree/proc/nearest/thread_orders.h"

#include <algorithm>
#include <utility>

#include "tree/proc/nearest/find_node.h"

namespace {

// Do the numbers rise in the order of the tree? Then `last` becomes the last one. The leaf of a
// Begin has that of its block.
bool IsRising(CProcessThread& thread, std::int64_t& last) {
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

bool ThreadOrders::Note(CProcessThread& thread, std::uint32_t number, std::uint64_t leaf) {
  ThreadOrder& order = thread.order;
  const bool rises = number > order.last;
  order.last = number;
  if (rises) return false;
  order.runBegins = leaf;
  if (!order.rising) return std::exchange(order.twoRuns, false);
  order.rising = false;
  order.twoRuns = true;
  ++order.runs;
  for (CExecutionBlock* open = thread.currentBlock;; open = open->parent) {
    open->children.BeginRun();
    open->openAtRun = order.runs;
    if (open == &thread) break;
  }
  m_broken.push_back(&thread);
  return true;
}

// What came before the run has gone by then, but for blocks that it left open.
bool ThreadOrders::Recover(std::uint64_t oldestLeaf, std::uint64_t nextLeaf) {
  return std::erase_if(m_broken, [=](CProcessThread* thread) {
           ThreadOrder& order = thread->order;
           if (oldestLeaf < order.runBegins) return false;
           std::int64_t last = -1;
           order.rising = IsRising(*thread, last);
           if (order.rising) order.twoRuns = false;
           // The trace filed last may have gone before a block with a greater number.
           if (order.rising)
             order.last = std::max(order.last, last);
           else
             order.runBegins = nextLeaf;
           return order.rising;
         }) > 0;
}
