#include "tree/proc/nearest/search_in_order.h"

namespace {

// The first child with a number above the wanted one, among those from the frame's position up to
// before `end`. Stores that a number from the one before it on takes the same path.
std::size_t FirstAboveIn(LastFound& last, const WalkFrame& from, std::size_t end,
                         std::uint32_t wanted) {
  const ChildList& children = from.node->children;
  const std::size_t above = FirstAbove(children, wanted, from.position, end);
  if (above > from.position) last.HoldsFrom(NumberAt(children, above - 1));
  return above;
}

// The walk ends at this leaf. It does so for every number from the wanted one on that is below the
// leaf's and below that of a neighbour that does not count yet.
NodePosition StopAt(LastFound& last, NodePosition place, std::uint32_t wanted) {
  const ChildList& children = place.owner->children;
  const std::uint32_t leaf = NumberAt(children, place.position);
  last.MeetLeaf(leaf);
  last.HoldsBefore(leaf);
  const NodePosition stop = StopAtLeaf(*place.owner, place.position, wanted);
  if (place.position == 0) return stop;
  const std::uint32_t before = NumberAt(children, place.position - 1);
  if (before <= wanted) {
    last.MeetNeighbour(before);
    return stop;
  }
  last.HoldsBefore(before);
  // A leaf with a huge number, as a trace without a number has, may be farther than the neighbour;
  // the greater the wanted number, the less so.
  if (stop.position != place.position) {
    last.MeetLeaf(before);
    last.Forget();
  } else if (std::uint64_t{leaf} + before > UINT32_MAX) {
    last.HoldsFrom(wanted);
  }
  return stop;
}

}  // namespace

// From an open block, or a thread, down to a block that contains more than one open block.
CExecutionBlock* SearchInOrder::DownToContent(CExecutionBlock* block) {
  for (;;) {
    ChildList& children = block->children;
    if (children.FirstLeaf(0) < children.size() || m_empty.Count(*block) + 1 != children.size())
      return block;
    CExecutionBlock* const last = children.BlockAt(children.size() - 1);
    if (last->closed) return block;
    block = last;
  }
}

NodePosition SearchInOrder::InOneRun(ThreadRow& row, LastFound& last, std::uint32_t wanted) {
  row.start = DownToContent(row.start);
  last.BeginSearch();
  return Below(last, row.start, wanted);
}

// All children before the first one above the wanted number have only smaller numbers and give
// nothing, except the last of them, which may be a block that continues beyond the wanted number.
// REQUIRES: the numbers below the node rise.
NodePosition SearchInOrder::Below(LastFound& last, CExecutionBlock* top, std::uint32_t wanted) {
  NodePosition best;
  m_passed.clear();
  for (CExecutionBlock* node = top; node;) {
    ChildList& children = node->children;
    const std::size_t above = FirstAboveIn(last, {node}, children.size(), wanted);
    const std::size_t leaf = children.FirstLeaf(above);
    if (leaf < children.size()) {
      best = StopAt(last, {node, leaf}, wanted);
      break;
    }
    m_passed.push_back({node, above});
    node = above > 0 ? children.BlockAt(above - 1) : nullptr;
  }
  for (; !m_passed.empty(); m_passed.pop_back()) {
    const WalkFrame& passed = m_passed.back();
    best = Nearer(best, FirstBelow(last, passed, passed.node->children.size(), wanted), wanted);
  }
  return best;
}

// Nothing for a leaf.
NodePosition SearchInOrder::BelowChild(LastFound& last, const ChildList& children,
                                       std::size_t position, std::uint32_t wanted) {
  CExecutionBlock* const block = children.BlockAt(position);
  return block ? Below(last, block, wanted) : NodePosition();
}

// Goes down through the nodes that were open when the second run began, in their children of the
// first run, and up again in those of the second (two_runs.h has an example). `last` then has the
// nearest of all leaves and neighbours met, though a leaf after them may have ended the search.
NodePosition SearchInOrder::InTwoRuns(const ThreadRow& row, LastFound& last, std::uint32_t wanted) {
  last.BeginSearch();
  NodePosition found = DownFirstRuns(last, *row.order.Runs(), row.thread, wanted);
  for (; !m_open.empty(); m_open.pop_back()) {
    m_open.back().best = Nearer(m_open.back().best, found, wanted);
    found = SecondRun(last, m_open.back(), wanted);
  }
  return found;
}

// Stores in m_open the visited nodes, each with its result and with the position where its second
// run begins. Returns the leaf that ended the search below the last of them, if there was one.
NodePosition SearchInOrder::DownFirstRuns(LastFound& last, const TwoRuns& runs,
                                          CExecutionBlock* node, std::uint32_t wanted) {
  m_open.clear();
  while (node) {
    ChildList& children = node->children;
    CExecutionBlock* const open = runs.OpenIn(*node);
    const std::size_t end = runs.FirstRunOf(*node);
    const std::size_t closed = open ? end - 1 : end;
    const std::size_t above = FirstAboveIn(last, {node}, end, wanted);
    const std::size_t leaf = children.FirstLeaf(above);
    if (leaf < end) return StopAt(last, {node, leaf}, wanted);
    NodePosition best;
    if (above > 0 && above <= closed) best = BelowChild(last, children, above - 1, wanted);
    best = Nearer(best, FirstBelow(last, {node, above}, closed, wanted), wanted);
    m_open.push_back({node, end, best});
    node = open;
  }
  return {};
}

// The node's children from the frame's position on, after the result of its other children.
NodePosition SearchInOrder::SecondRun(LastFound& last, const WalkFrame& frame,
                                      std::uint32_t wanted) {
  ChildList& children = frame.node->children;
  const std::size_t above = FirstAboveIn(last, frame, children.size(), wanted);
  const std::size_t leaf = children.FirstLeaf(above);
  if (leaf < children.size()) return StopAt(last, {frame.node, leaf}, wanted);
  NodePosition best = frame.best;
  if (above > frame.position)
    best = Nearer(best, BelowChild(last, children, above - 1, wanted), wanted);
  return Nearer(best, FirstBelow(last, {frame.node, above}, children.size(), wanted), wanted);
}

// Below the children from the frame's position up to before `end`, which are all blocks with
// numbers above the wanted one: the first block with a result has the nearest.
NodePosition SearchInOrder::FirstBelow(LastFound& last, WalkFrame from, std::size_t end,
                                       std::uint32_t wanted) {
  m_path.assign(1, from);
  while (!m_path.empty()) {
    WalkFrame& frame = m_path.back();
    ChildList& children = frame.node->children;
    const std::size_t stop = m_path.size() == 1 ? end : children.size();
    const std::size_t leaf = children.FirstLeaf(frame.position);
    if (leaf < stop) return StopAt(last, {frame.node, leaf}, wanted);
    frame.position = std::max(frame.position, m_empty.Count(*frame.node));
    if (frame.position >= stop) {
      m_path.pop_back();
    } else {
      m_path.push_back({children.BlockAt(frame.position++)});
    }
  }
  return {};
}
