#include "tree/proc/find_node.h"

#include <vector>

#include "records/trace_event.h"

std::uint32_t SequenceNumberOf(const TraceEvent_i& event) {
  const std::uint8_t* const record = event.Record();
  return record ? RawTrace(record).SequenceNumber() : event.GetSequenceNumber();
}

std::uint32_t NumberAt(const ChildList& children, std::size_t position) {
  if (const CExecutionBlock* const block = children.BlockAt(position)) return block->sequenceNumber;
  return SequenceNumberOf(*children[position]->event);
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
  // Unsigned: a block before with a greater number is farther than any but the greatest leaf.
  const std::uint32_t before = wanted - NumberAt(owner.children, position - 1);
  const std::uint32_t after = NumberAt(owner.children, position) - wanted;
  return {&owner, before >= after ? position : position - 1};
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
