#include "tree/proc/nearest/find_node.h"

#include <algorithm>

#include "records/trace_event.h"

std::uint32_t SequenceNumberOf(const TraceEvent_i& event) {
  const std::uint8_t* const record = event.Record();
  return record ? RawTrace(record).SequenceNumber() : event.GetSequenceNumber();
}

std::uint32_t NumberAt(const ChildList& children, std::size_t position) {
  if (const CExecutionBlock* const block = children.BlockAt(position)) return block->sequenceNumber;
  return SequenceNumberOf(*children[position]->event);
}

std::size_t FirstAbove(const ChildList& children, std::uint32_t wanted, std::size_t begin,
                       std::size_t end) {
  std::size_t low = begin, step = 1;
  while (low + step <= end && NumberAt(children, low + step - 1) <= wanted) {
    low += step;
    step *= 2;
  }
  std::size_t high = std::min(low + step, end);
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

std::uint32_t Distance(NodePosition found, std::uint32_t wanted) {
  const std::uint32_t number = NumberAt(found.owner->children, found.position);
  return number > wanted ? number - wanted : wanted - number;
}

NodePosition Nearer(NodePosition earlier, NodePosition later, std::uint32_t wanted) {
  if (!earlier) return later;
  return later && Distance(later, wanted) < Distance(earlier, wanted) ? later : earlier;
}

NodePosition StopAtLeaf(CExecutionBlock& owner, std::size_t position, std::uint32_t wanted) {
  if (position == 0) return {&owner, 0};
  // Unsigned: an earlier block with a greater number is farther than any leaf but the greatest.
  const std::uint32_t before = wanted - NumberAt(owner.children, position - 1);
  const std::uint32_t after = NumberAt(owner.children, position) - wanted;
  return {&owner, before >= after ? position : position - 1};
}

NodeWalk::NodeWalk(CExecutionBlock& top, const TraceEvent_i& event)
    : m_event(event), m_wanted(SequenceNumberOf(event)), m_path{{&top}} {}

bool NodeWalk::Go(std::size_t nodes) {
  for (; nodes > 0 && !m_path.empty(); --nodes)
    if (Step()) m_path.clear();
  return m_path.empty();
}

// Is m_found the result?
bool NodeWalk::Step() {
  WalkFrame& frame = m_path.back();
  const ChildList& children = frame.node->children;
  NodePosition found;
  bool ended = false;
  if (frame.position == children.size()) {
    found = frame.best;
    ended = true;
  } else if (CExecutionBlock* const block = children.BlockAt(frame.position)) {
    m_path.push_back({block});
  } else {
    const TraceEvent_i* const here = children[frame.position]->event;
    if (here == &m_event) {
      m_found = {frame.node, frame.position};
      return true;
    }
    ended = SequenceNumberOf(*here) > m_wanted;
    if (ended) found = StopAtLeaf(*frame.node, frame.position, m_wanted);
    ++frame.position;
  }
  if (!ended) return false;
  m_path.pop_back();
  m_found = found;
  // A block that the trace opened is the result itself, not only near it.
  if (m_path.empty() || (found && found.Node()->event == &m_event)) return true;
  m_path.back().best = Nearer(m_path.back().best, found, m_wanted);
  ++m_path.back().position;
  return false;
}

NodePosition FindNodeByWalk(CExecutionBlock& top, const TraceEvent_i& event) {
  NodeWalk walk(top, event);
  while (!walk.Go(SIZE_MAX)) {
  }
  return walk.Found();
}
