#include "tree/proc/nearest/nearest_in_order.h"

#include <algorithm>

#include "tree/proc/nearest/find_leaf.h"

namespace {

// Nothing is below the block, and nothing will ever be.
bool IsHollow(const CExecutionBlock& block) {
  return block.closed && block.children.Hollow() == block.children.size();
}

// Counts the hollow children at the front.
std::size_t SkipHollow(ChildList& children) {
  std::size_t position = children.Hollow();
  while (position < children.size() && children.BlockAt(position) &&
         IsHollow(*children.BlockAt(position)))
    ++position;
  children.SetHollow(position);
  return position;
}

// From an open block, or a thread, down to one that has more in it than one open block.
CExecutionBlock* DownToContent(CExecutionBlock* block) {
  for (;;) {
    ChildList& children = block->children;
    if (children.FirstLeaf(0) < children.size() || SkipHollow(children) + 1 != children.size())
      return block;
    CExecutionBlock* const last = children.BlockAt(children.size() - 1);
    if (last->closed) return block;
    block = last;
  }
}

// REQUIRES: the children are level nodes.
template <class Visit>
void ForEachLevelNode(const CExecutionBlock& node, Visit&& visit) {
  for (std::size_t i = 0; i < node.children.size(); ++i) visit(*node.children.BlockAt(i));
}

}  // namespace

void NearestInOrder::Clear() {
  m_fronts.clear();
  m_complete = true;
  m_nothingFrom = kNone;
}

void NearestInOrder::OnAppended(const CProcessThread& thread) {
  m_nothingFrom = kNone;
  if (m_complete) m_fronts[thread.front].Forget();
}

void NearestInOrder::OnClosed(const CExecutionBlock& block) {
  if (!m_complete) return;
  Front& front = m_fronts[block.thread->front];
  if (front.start == &block) front.start = block.parent;
}

// Where there is nothing, nothing comes from what goes.
void NearestInOrder::OnErased(const CExecutionBlock& owner) {
  if (!m_complete) return;
  Front& front = m_fronts[owner.thread->front];
  if (!front.FoundNothing()) front.Forget();
}

// The threads in the order of the tree.
void NearestInOrder::Collect(const CRoot& root) {
  m_fronts.clear();
  ForEachLevelNode(root, [&](CExecutionBlock& machine) {
    ForEachLevelNode(machine, [&](CExecutionBlock& application) {
      ForEachLevelNode(application, [&](CExecutionBlock& process) {
        ForEachLevelNode(process, [&](CExecutionBlock& thread) {
          thread.thread->front = static_cast<std::uint32_t>(m_fronts.size());
          const ThreadOrder& order = thread.thread->order;
          m_fronts.push_back({&thread, &thread, order.rising, order.twoRuns});
        });
      });
    });
  });
  m_complete = true;
}

NodePosition NearestInOrder::Find(const CRoot& root, const TraceEvent_i& event, ThreadWalks& walks,
                                  CExecutionBlock* block) {
  const std::uint32_t wanted = SequenceNumberOf(event);
  if (block && block->unreachable) block = nullptr;
  // The walk would meet the trace's own block only as the neighbour before a leaf.
  if (block && IsOfFirstRun(*block)) {
    const ChildList& siblings = block->parent->children;
    const std::size_t next = FirstAbove(siblings, wanted, 0, SizeOfFirstRun(*block->parent));
    if (next < siblings.size() && siblings.IsLeaf(next) && NumberAt(siblings, next) > wanted)
      return {block->parent, next - 1};
    block = nullptr;
  }
  if (wanted >= m_nothingFrom) return {};
  if (!m_complete) Collect(root);
  Front* nearest = nullptr;
  NodePosition walked;  // the result of a walk, when that is the nearest
  std::uint64_t distance = kNone, from = 0;
  for (Front& front : m_fronts) {
    NodePosition place;
    const bool ownBlock = block && block->thread == front.thread;
    const bool known = front.Knows(wanted) && !ownBlock;
    if (!known && front.rising) Search(front, wanted);
    std::uint64_t away = front.DistanceFrom(wanted);
    // What is known of a thread with two runs may be nearer than what it gives.
    if (!front.rising && (!known || away < distance)) {
      place = front.twoRuns && !ownBlock ? SearchTwoRuns(front, wanted)
                                         : WalkThrough(front, walks, wanted);
      if (place && place.Node()->event == &event) return place;
      away = place ? Distance(place, wanted) : kNone;
    }
    from = std::max(from, front.from);
    // Of several that are as near the first one counts.
    if (away >= distance) continue;
    distance = away;
    nearest = &front;
    walked = place;
  }
  if (walked) return walked;
  if (nearest) return Search(*nearest, wanted);
  if (!walks.AnyLeft()) m_nothingFrom = from;
  return {};
}

// Only nothing is worth remembering: it holds for all greater numbers.
NodePosition NearestInOrder::WalkThrough(Front& front, ThreadWalks& walks, std::uint32_t wanted) {
  const std::optional<NodePosition> place = walks.Through(*front.thread);
  if (!place) return {};
  front.BeginSearch();
  front.from = wanted;
  if (*place) front.Forget();
  return *place;
}

NodePosition NearestInOrder::Search(Front& front, std::uint32_t wanted) {
  front.start = DownToContent(front.start);
  front.BeginSearch();
  return SearchBelow(front, front.start, wanted);
}

// All children before the first one above the wanted number hold smaller numbers only and give
// nothing, but for the last of them: a block that goes on beyond the wanted number. REQUIRES: the
// numbers below the node rise.
NodePosition NearestInOrder::SearchBelow(Front& front, CExecutionBlock* top, std::uint32_t wanted) {
  NodePosition best;
  m_passed.clear();
  for (CExecutionBlock* node = top; node;) {
    ChildList& children = node->children;
    const std::size_t above = FirstAbove(children, wanted, 0, children.size());
    // A number from here up to the wanted one leads down the same way.
    if (above > 0) front.HoldsFrom(NumberAt(children, above - 1));
    const std::size_t leaf = children.FirstLeaf(above);
    if (leaf < children.size()) {
      best = StopAt(front, {node, leaf}, wanted);
      break;
    }
    m_passed.push_back({node, above});
    node = above > 0 ? children.BlockAt(above - 1) : nullptr;
  }
  for (; !m_passed.empty(); m_passed.pop_back())
    best = Nearer(best,
                  FirstBelow(front, m_passed.back(), m_passed.back().node->children.size(), wanted),
                  wanted);
  return best;
}

// Down through the nodes that were open when the second run began, by their children of the first
// run, and up again by those of the second. Of each run the search is that of a thread in order.
// The front then knows the nearest of all leaves and neighbours met, though a leaf behind them may
// have ended the search.
NodePosition NearestInOrder::SearchTwoRuns(Front& front, std::uint32_t wanted) {
  NodePosition found;
  front.BeginSearch();
  m_open.clear();
  for (CExecutionBlock* node = front.thread; node;) {
    ChildList& children = node->children;
    const std::size_t first = children.BeforeRun();
    CExecutionBlock* const open = OpenAtRun(*node);
    const std::size_t closed = open ? first - 1 : first;
    const std::size_t above = FirstAbove(children, wanted, 0, first);
    if (above > 0) front.HoldsFrom(NumberAt(children, above - 1));
    const std::size_t leaf = children.FirstLeaf(above);
    if (leaf < first) {
      found = StopAt(front, {node, leaf}, wanted);
      break;
    }
    NodePosition best;
    if (above > 0 && above <= closed)
      if (CExecutionBlock* const block = children.BlockAt(above - 1))
        best = SearchBelow(front, block, wanted);
    best = Nearer(best, FirstBelow(front, {node, above}, closed, wanted), wanted);
    m_open.push_back({node, first, best});
    node = open;
  }
  for (; !m_open.empty(); m_open.pop_back()) {
    m_open.back().best = Nearer(m_open.back().best, found, wanted);
    found = SearchSecondRun(front, m_open.back(), wanted);
  }
  return found;
}

// The node's children from the frame's position on, behind what its others gave.
NodePosition NearestInOrder::SearchSecondRun(Front& front, const WalkFrame& frame,
                                             std::uint32_t wanted) {
  ChildList& children = frame.node->children;
  const std::size_t above = FirstAbove(children, wanted, frame.position, children.size());
  if (above > frame.position) front.HoldsFrom(NumberAt(children, above - 1));
  const std::size_t leaf = children.FirstLeaf(above);
  if (leaf < children.size()) return StopAt(front, {frame.node, leaf}, wanted);
  NodePosition best = frame.best;
  if (above > frame.position)
    if (CExecutionBlock* const block = children.BlockAt(above - 1))
      best = Nearer(best, SearchBelow(front, block, wanted), wanted);
  return Nearer(best, FirstBelow(front, {frame.node, above}, children.size(), wanted), wanted);
}

// The walk ends at this leaf, and so it does for every number from the wanted one on that is below
// the leaf's and below that of a neighbour that does not count yet.
NodePosition NearestInOrder::StopAt(Front& front, NodePosition place, std::uint32_t wanted) {
  const ChildList& children = place.owner->children;
  const std::uint32_t leaf = NumberAt(children, place.position);
  front.leaf = std::min<std::uint64_t>(front.leaf, leaf);
  front.until = std::min<std::uint64_t>(front.until, leaf);
  const NodePosition stop = StopAtLeaf(*place.owner, place.position, wanted);
  if (place.position > 0) {
    const std::uint32_t before = NumberAt(children, place.position - 1);
    if (before > wanted) {
      front.until = std::min<std::uint64_t>(front.until, before);
      // It counts beside a leaf with a huge number, as that of a trace without one is, and the less
      // the greater the wanted number.
      if (stop.position != place.position) {
        front.leaf = std::min<std::uint64_t>(front.leaf, before);
        front.Forget();
      } else if (std::uint64_t{leaf} + before > UINT32_MAX) {
        front.HoldsFrom(wanted);
      }
    } else {
      front.neighbour =
          front.neighbour == kNone ? before : std::max<std::uint64_t>(front.neighbour, before);
    }
  }
  return stop;
}

// Below the children from the frame's position on up to `end`, which all are blocks and have
// numbers above the wanted one: the first block that gives anything gives the nearest.
NodePosition NearestInOrder::FirstBelow(Front& front, WalkFrame from, std::size_t end,
                                        std::uint32_t wanted) {
  m_path.assign(1, from);
  while (!m_path.empty()) {
    WalkFrame& frame = m_path.back();
    ChildList& children = frame.node->children;
    const std::size_t last = m_path.size() == 1 ? end : children.size();
    const std::size_t leaf = children.FirstLeaf(frame.position);
    if (leaf < last) return StopAt(front, {frame.node, leaf}, wanted);
    frame.position = std::max(frame.position, SkipHollow(children));
    if (frame.position >= last) {
      m_path.pop_back();
    } else {
      m_path.push_back({children.BlockAt(frame.position++)});
    }
  }
  return {};
}
