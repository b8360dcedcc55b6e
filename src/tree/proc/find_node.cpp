#include "tree/proc/find_node.h"

#include <algorithm>
#include <vector>

#include "records/trace_event.h"

namespace {

std::uint32_t Distance(NodePosition found, std::uint32_t wanted) {
  const std::uint32_t number = NumberAt(found.owner->children, found.position);
  return number > wanted ? number - wanted : wanted - number;
}

// A near hit replaces an earlier one only if it is nearer.
NodePosition Nearer(NodePosition earlier, NodePosition later, std::uint32_t wanted) {
  if (!earlier) return later;
  return later && Distance(later, wanted) < Distance(earlier, wanted) ? later : earlier;
}

// At the first leaf with a greater number than the wanted one.
NodePosition StopAtLeaf(CExecutionBlock& owner, std::size_t position, std::uint32_t wanted) {
  if (position == 0) return {&owner, 0};
  // Unsigned: a block before with a greater number is as far as can be.
  const std::uint32_t before = wanted - NumberAt(owner.children, position - 1);
  const std::uint32_t after = NumberAt(owner.children, position) - wanted;
  return {&owner, before >= after ? position : position - 1};
}

// The first child with a number above the wanted one, size() for none. Doubles its steps from the
// front, where most searches end.
std::size_t FirstAbove(const ChildList& children, std::uint32_t wanted) {
  std::size_t low = 0, step = 1;
  while (low + step <= children.size() && NumberAt(children, low + step - 1) <= wanted) {
    low += step;
    step *= 2;
  }
  std::size_t high = std::min(low + step, children.size());
  while (low < high) {
    const std::size_t middle = low + (high - low) / 2;
    if (NumberAt(children, middle) <= wanted) {
      low = middle + 1;
    } else {
      high = middle;
    }
  }
  return low;
}

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

std::uint32_t SequenceNumberOf(const TraceEvent_i& event) {
  const std::uint8_t* const record = event.Record();
  return record ? RawTrace(record).SequenceNumber() : event.GetSequenceNumber();
}

std::uint32_t NumberAt(const ChildList& children, std::size_t position) {
  if (const CExecutionBlock* const block = children.BlockAt(position)) return block->sequenceNumber;
  return SequenceNumberOf(*children[position]->event);
}

NodePosition FindLeafInOrder(CProcessThread& thread, const TraceEvent_i& event,
                             CExecutionBlock*& opened) {
  const std::uint32_t wanted = SequenceNumberOf(event);
  opened = nullptr;
  for (CExecutionBlock* node = &thread; node;) {
    const std::size_t above = FirstAbove(node->children, wanted);
    if (above == 0) break;
    CExecutionBlock* const block = node->children.BlockAt(above - 1);
    if (!block && node->children[above - 1]->event == &event) return {node, above - 1};
    if (block && block->event == &event) opened = block;
    node = block;
  }
  return {};
}

NodePosition FindNodeByWalk(CExecutionBlock& top, const TraceEvent_i& event) {
  const std::uint32_t wanted = SequenceNumberOf(event);
  std::vector<WalkFrame> path{{&top}};
  for (;;) {
    WalkFrame& frame = path.back();
    const ChildList& children = frame.node->children;
    NodePosition found;
    bool ended = false;
    if (frame.position == children.size()) {
      found = frame.best;
      ended = true;
    } else if (CExecutionBlock* const block = children.BlockAt(frame.position)) {
      path.push_back({block});
    } else {
      const TraceEvent_i* const here = children[frame.position]->event;
      if (here == &event) return {frame.node, frame.position};
      ended = SequenceNumberOf(*here) > wanted;
      if (ended) found = StopAtLeaf(*frame.node, frame.position, wanted);
      ++frame.position;
    }
    if (!ended) continue;
    path.pop_back();
    // A block that the trace has made counts as found, not as near.
    if (path.empty() || (found && found.Node()->event == &event)) return found;
    path.back().best = Nearer(path.back().best, found, wanted);
    ++path.back().position;
  }
}

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
          m_fronts.push_back({&thread, &thread, thread.thread->order.rising});
        });
      });
    });
  });
  m_complete = true;
}

NodePosition NearestInOrder::Find(const CRoot& root, const TraceEvent_i& event,
                                  CExecutionBlock* block) {
  // The walk would meet the trace's own block only as the neighbour before a leaf.
  if (block && !block->unreachable && block->thread->order.rising) {
    const ChildList& siblings = block->parent->children;
    const std::size_t position = FirstAbove(siblings, block->sequenceNumber) - 1;
    if (position + 1 < siblings.size() && siblings.IsLeaf(position + 1))
      return {block->parent, position};
  }
  const std::uint32_t wanted = SequenceNumberOf(event);
  if (wanted >= m_nothingFrom) return {};
  if (!m_complete) Collect(root);
  Front* nearest = nullptr;
  NodePosition walked;  // the result of a walk, when that is the nearest
  std::uint64_t distance = kNone, from = 0;
  for (Front& front : m_fronts) {
    NodePosition place;
    if (!front.Knows(wanted)) {
      if (front.rising)
        Search(front, wanted);
      else
        place = WalkThrough(front, event, wanted);
    }
    if (place && place.Node()->event == &event) return place;
    from = std::max(from, front.from);
    // Of several that are as near the first one counts.
    if (front.DistanceFrom(wanted) >= distance) continue;
    distance = front.DistanceFrom(wanted);
    nearest = &front;
    walked = place;
  }
  if (walked) return walked;
  if (nearest) return Search(*nearest, wanted);
  m_nothingFrom = from;
  return {};
}

// Only nothing is worth remembering: it holds for all greater numbers.
NodePosition NearestInOrder::WalkThrough(Front& front, const TraceEvent_i& event,
                                         std::uint32_t wanted) {
  const NodePosition place = FindNodeByWalk(*front.thread, event);
  front.from = wanted;
  front.until = front.leaf = front.neighbour = kNone;
  if (!place) return place;
  front.until = wanted;
  const std::uint32_t number = NumberAt(place.owner->children, place.position);
  (number > wanted ? front.leaf : front.neighbour) = number;
  return place;
}

// All children before the first one above the wanted number hold smaller numbers only and give
// nothing, but for the last of them: a block that goes on beyond the wanted number.
NodePosition NearestInOrder::Search(Front& front, std::uint32_t wanted) {
  front.start = DownToContent(front.start);
  front.from = 0;
  front.until = front.leaf = front.neighbour = kNone;
  NodePosition best;
  m_passed.clear();
  for (CExecutionBlock* node = front.start; node;) {
    ChildList& children = node->children;
    const std::size_t above = FirstAbove(children, wanted);
    // A number from here up to the wanted one leads down the same way.
    if (above > 0) front.from = std::max<std::uint64_t>(front.from, NumberAt(children, above - 1));
    const std::size_t leaf = children.FirstLeaf(above);
    if (leaf < children.size()) {
      best = StopAt(front, {node, leaf}, wanted);
      break;
    }
    m_passed.push_back({node, above});
    node = above > 0 ? children.BlockAt(above - 1) : nullptr;
  }
  for (; !m_passed.empty(); m_passed.pop_back())
    best = Nearer(best, FirstBelow(front, m_passed.back(), wanted), wanted);
  return best;
}

// The walk ends at this leaf, and so it does for every number from the wanted one on that is below
// the leaf's and below that of a neighbour that does not count yet.
NodePosition NearestInOrder::StopAt(Front& front, NodePosition place, std::uint32_t wanted) {
  const ChildList& children = place.owner->children;
  const std::uint32_t leaf = NumberAt(children, place.position);
  front.leaf = std::min<std::uint64_t>(front.leaf, leaf);
  front.until = std::min<std::uint64_t>(front.until, leaf);
  if (place.position > 0) {
    const std::uint32_t before = NumberAt(children, place.position - 1);
    if (before > wanted) {
      front.until = std::min<std::uint64_t>(front.until, before);
    } else {
      front.neighbour = before;
    }
  }
  return StopAtLeaf(*place.owner, place.position, wanted);
}

// Below the children from a position on, which all are blocks and have numbers above the wanted
// one: the first block that gives anything gives the nearest.
NodePosition NearestInOrder::FirstBelow(Front& front, WalkFrame from, std::uint32_t wanted) {
  m_path.assign(1, from);
  while (!m_path.empty()) {
    WalkFrame& frame = m_path.back();
    ChildList& children = frame.node->children;
    const std::size_t leaf = children.FirstLeaf(frame.position);
    if (leaf < children.size()) return StopAt(front, {frame.node, leaf}, wanted);
    frame.position = std::max(frame.position, SkipHollow(children));
    if (frame.position >= children.size()) {
      m_path.pop_back();
    } else {
      m_path.push_back({children.BlockAt(frame.position++)});
    }
  }
  return {};
}
