#include "tree/proc/find_node.h"

#include <algorithm>
#include <vector>

#include "records/trace_event.h"

namespace {

std::uint32_t NumberAt(const ChildList& children, std::size_t position) {
  if (const CExecutionBlock* const block = children.BlockAt(position)) return block->sequenceNumber;
  return SequenceNumberOf(*children[position]->event);
}

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
NodePosition StopAt(CExecutionBlock& owner, std::size_t position, std::uint32_t wanted) {
  if (position == 0) return {&owner, 0};
  // Unsigned: a block before with a greater number is as far as can be.
  const std::uint32_t before = wanted - NumberAt(owner.children, position - 1);
  const std::uint32_t after = NumberAt(owner.children, position) - wanted;
  return {&owner, before >= after ? position : position - 1};
}

// How far a walk has come in one node's children.
struct Frame {
  CExecutionBlock* node;
  std::size_t position = 0;
  NodePosition best = {};
};

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

// The search in rising order, below one thread after the other.
class NearestSearch {
 public:
  explicit NearestSearch(std::uint32_t wanted) : m_wanted(wanted) {}

  void Visit(CExecutionBlock& thread) { m_best = Nearer(m_best, Below(thread), m_wanted); }
  NodePosition Best() const { return m_best; }

 private:
  // All children before the first one above the wanted number hold smaller numbers only and give
  // nothing, but for the last of them: a block that goes on beyond the wanted number.
  NodePosition Below(CExecutionBlock& thread) {
    NodePosition best;
    m_passed.clear();
    for (CExecutionBlock* node = &thread; node;) {
      const std::size_t above = FirstAbove(node->children, m_wanted);
      const std::size_t leaf = node->children.FirstLeaf(above);
      if (leaf < node->children.size()) {
        best = StopAt(*node, leaf, m_wanted);
        break;
      }
      m_passed.push_back({node, above});
      node = above > 0 ? node->children.BlockAt(above - 1) : nullptr;
    }
    for (; !m_passed.empty(); m_passed.pop_back())
      best = Nearer(best, FirstBelow(m_passed.back()), m_wanted);
    return best;
  }

  // Below the children from a position on, which all are blocks and have numbers above the wanted
  // one: the first block that gives anything gives the nearest.
  NodePosition FirstBelow(Frame from) {
    m_path.assign(1, from);
    while (!m_path.empty()) {
      Frame& frame = m_path.back();
      ChildList& children = frame.node->children;
      const std::size_t leaf = children.FirstLeaf(frame.position);
      if (leaf < children.size()) return StopAt(*frame.node, leaf, m_wanted);
      frame.position = std::max(frame.position, SkipHollow(children));
      if (frame.position >= children.size()) {
        m_path.pop_back();
      } else {
        m_path.push_back({children.BlockAt(frame.position++)});
      }
    }
    return {};
  }

  const std::uint32_t m_wanted;
  NodePosition m_best;
  std::vector<Frame> m_passed, m_path;
};

// REQUIRES: the children are level nodes.
template <class Visit>
void ForEachLevelNode(CExecutionBlock& node, Visit&& visit) {
  for (std::size_t i = 0; i < node.children.size(); ++i) visit(*node.children.BlockAt(i));
}

}  // namespace

std::uint32_t SequenceNumberOf(const TraceEvent_i& event) {
  const std::uint8_t* const record = event.Record();
  return record ? RawTrace(record).SequenceNumber() : event.GetSequenceNumber();
}

NodePosition FindNodeByWalk(CExecutionBlock& top, const TraceEvent_i& event) {
  const std::uint32_t wanted = SequenceNumberOf(event);
  std::vector<Frame> path{{&top}};
  for (;;) {
    Frame& frame = path.back();
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
      if (ended) found = StopAt(*frame.node, frame.position, wanted);
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

NodePosition FindNearestInOrder(CRoot& root, const TraceEvent_i& event, CExecutionBlock* block) {
  // The walk would meet the trace's own block only as the neighbour before a leaf.
  if (block && !block->unreachable) {
    const std::size_t position = PositionInOrder(*block->parent, *block);
    const ChildList& siblings = block->parent->children;
    if (position + 1 < siblings.size() && siblings.IsLeaf(position + 1))
      return {block->parent, position};
  }
  NearestSearch search(SequenceNumberOf(event));
  ForEachLevelNode(root, [&](CExecutionBlock& machine) {
    ForEachLevelNode(machine, [&](CExecutionBlock& application) {
      ForEachLevelNode(application, [&](CExecutionBlock& process) {
        ForEachLevelNode(process, [&](CExecutionBlock& thread) { search.Visit(thread); });
      });
    });
  });
  return search.Best();
}

std::size_t PositionInOrder(const CExecutionBlock& owner, const CTraceEvent& child) {
  const ChildList& children = owner.children;
  if (!children.empty() && children[0] == &child) return 0;
  const std::uint32_t wanted = child.Kind() == NodeKind::Leaf
                                   ? SequenceNumberOf(*child.event)
                                   : static_cast<const CExecutionBlock&>(child).sequenceNumber;
  return FirstAbove(children, wanted) - 1;
}
