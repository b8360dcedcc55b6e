#include "tree/proc/nearest/find_leaf.h"

#include "records/trace_event.h"

namespace {

// The search for a trace's own leaf where numbers rise.
class LeafSearch {
 public:
  LeafSearch(const TraceEvent_i& event, ThreadWalks& walks, CExecutionBlock*& opened)
      : m_event(event), m_wanted(SequenceNumberOf(event)), m_walks(walks), m_opened(opened) {}

  NodePosition Below(CExecutionBlock* node) {
    while (node) {
      const NodePosition last = LastUpTo(*node, 0, node->children.size());
      if (!last || IsIt(last)) return last;
      node = last.owner->children.BlockAt(last.position);
    }
    return {};
  }
  NodePosition InTwoRuns(CProcessThread& thread, const TwoRuns& runs) {
    for (CExecutionBlock* node = &thread; node;) {
      CExecutionBlock* const open = runs.OpenIn(*node);
      const std::size_t first = runs.FirstRunOf(*node);
      if (const NodePosition place = In(*node, 0, first, open)) return place;
      if (In(*node, first, node->children.size(), open)) return ByWalk(thread);
      node = open;
    }
    return {};
  }
  NodePosition ByWalk(CProcessThread& thread) {
    return m_walks.Through(thread).value_or(NodePosition());
  }

 private:
  // Among the children [begin, end) and below them, except below `except`.
  NodePosition In(CExecutionBlock& node, std::size_t begin, std::size_t end,
                  const CExecutionBlock* except) {
    const NodePosition last = LastUpTo(node, begin, end);
    if (!last || IsIt(last)) return last;
    CExecutionBlock* const block = node.children.BlockAt(last.position);
    return block == except ? NodePosition() : Below(block);
  }
  // The last child with a number up to the wanted one.
  NodePosition LastUpTo(CExecutionBlock& node, std::size_t begin, std::size_t end) const {
    const std::size_t above = FirstAbove(node.children, m_wanted, begin, end);
    return above == begin ? NodePosition() : NodePosition{&node, above - 1};
  }
  // Is it the leaf? Stores the block.
  bool IsIt(NodePosition place) {
    CExecutionBlock* const block = place.owner->children.BlockAt(place.position);
    const bool own = place.Node()->event == &m_event;
    if (block && own) m_opened = block;
    return !block && own;
  }

  const TraceEvent_i& m_event;
  const std::uint32_t m_wanted;
  ThreadWalks& m_walks;
  CExecutionBlock*& m_opened;
};

}  // namespace

NodePosition FindLeafInThread(const ThreadRow& row, const TraceEvent_i& event, ThreadWalks& walks,
                              CExecutionBlock*& opened) {
  opened = nullptr;
  LeafSearch search(event, walks, opened);
  if (row.order.IsRising()) return search.Below(row.thread);
  const TwoRuns* const runs = row.order.Runs();
  return runs ? search.InTwoRuns(*row.thread, *runs) : search.ByWalk(*row.thread);
}
