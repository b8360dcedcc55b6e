#include "tree/proc/nearest/trace_search.h"

#include <algorithm>
#include <utility>

#include "tree/proc/nearest/find_leaf.h"

namespace {

// REQUIRES: the children are level nodes.
template <class Visit>
void ForEachLevelNode(const CExecutionBlock& node, Visit&& visit) {
  for (std::size_t i = 0; i < node.children.size(); ++i) visit(*node.children.BlockAt(i));
}

// In the order of the tree.
template <class Visit>
void ForEachThread(const CRoot& root, Visit&& visit) {
  ForEachLevelNode(root, [&](CExecutionBlock& machine) {
    ForEachLevelNode(machine, [&](CExecutionBlock& application) {
      ForEachLevelNode(application, [&](CExecutionBlock& process) {
        ForEachLevelNode(process, [&](CExecutionBlock& thread) { visit(*thread.thread); });
      });
    });
  });
}

}  // namespace

struct TraceSearch::Wanted {
  const TraceEvent_i& event;
  std::uint32_t number;
  ThreadWalks& walks;
  const CExecutionBlock* block;  // opened by the trace, and not in a first run
};

// The best result of the threads that have been searched.
struct TraceSearch::Nearest {
  std::size_t row = SIZE_MAX;
  NodePosition walked;  // the result of a walk, if that is the nearest
  std::uint64_t distance = LastFound::kNone;
  std::uint64_t knownFrom = 0;  // the results of all threads are valid from this number on
  bool isTheTrace = false;      // made by the trace itself, not only near it
};

// ---- what changes in the tree

void TraceSearch::OnThread(CProcessThread& thread) {
  thread.searchRow = static_cast<std::uint32_t>(m_rows.size());
  m_rows.emplace_back(thread);
  m_last.emplace_back();
  m_sorted = false;
}

void TraceSearch::OnTrace(CProcessThread& thread, std::uint32_t number, std::uint64_t leaf) {
  m_nothingFrom = LastFound::kNone;
  LastOf(thread).Forget();
  if (RowOf(thread).order.Note(thread, number, leaf)) m_broken.push_back(&thread);
}

void TraceSearch::OnClosed(const CExecutionBlock& block) {
  ThreadRow& row = RowOf(*block.thread);
  if (row.start == &block) row.start = block.parent;
}

// A search without a hit stays without a hit when something is removed.
void TraceSearch::OnErased(const CExecutionBlock& owner, std::size_t position) {
  LastFound& last = LastOf(*owner.thread);
  if (!last.IsNothing()) last.Forget();
  if (TwoRuns* const runs = RowOf(*owner.thread).order.Runs()) runs->OnErased(owner, position);
  m_empty.OnErased(owner, position);
}

void TraceSearch::OnDropped(const CExecutionBlock& block) {
  if (TwoRuns* const runs = RowOf(*block.thread).order.Runs()) runs->OnDropped(block);
}

void TraceSearch::Clear() {
  m_rows.clear();
  m_last.clear();
  m_sorted = true;
  m_broken.clear();
  m_nothingFrom = LastFound::kNone;
  m_empty.Clear();
}

void TraceSearch::Recover(std::uint64_t oldestLeaf, std::uint64_t nextLeaf) {
  std::erase_if(m_broken, [=, this](CProcessThread* thread) {
    const bool inOrder = RowOf(*thread).order.Recover(*thread, oldestLeaf, nextLeaf);
    // For two runs it may have been nearer than the result.
    if (inOrder) LastOf(*thread).Forget();
    return inOrder;
  });
}

// New threads are at the end of the rows, but anywhere in the tree.
void TraceSearch::SortRows(const CRoot& root) {
  if (std::exchange(m_sorted, true)) return;
  std::vector<ThreadRow> rows;
  std::vector<LastFound> last;
  rows.reserve(m_rows.size());
  last.reserve(m_rows.size());
  ForEachThread(root, [&](CProcessThread& thread) {
    rows.push_back(std::move(RowOf(thread)));
    last.push_back(LastOf(thread));
    thread.searchRow = static_cast<std::uint32_t>(rows.size() - 1);
  });
  m_rows = std::move(rows);
  m_last = std::move(last);
}

// ---- the search

NodePosition TraceSearch::Find(const CRoot& root, CProcessThread* thread, const TraceEvent_i& event,
                               ThreadWalks& walks) {
  CExecutionBlock* opened = nullptr;
  if (thread) {
    const NodePosition place = FindLeafInThread(RowOf(*thread), event, walks, opened);
    if (walks.AnyLeft()) return {};
    if (place && place.Node()->event == &event) return place;
  }
  return FindNearest(root, event, walks, opened);
}

NodePosition TraceSearch::FindNearest(const CRoot& root, const TraceEvent_i& event,
                                      ThreadWalks& walks, CExecutionBlock* block) {
  const std::uint32_t number = SequenceNumberOf(event);
  if (block && block->unreachable) block = nullptr;
  // The walk would find the trace's own block only as the neighbour before a leaf.
  if (block && IsOfFirstRun(*block)) {
    if (const NodePosition place = LeafAfterBlock(*block, number)) return place;
    block = nullptr;
  }
  if (number >= m_nothingFrom) return {};
  SortRows(root);
  const Nearest nearest = LookInThreads({event, number, walks, block});
  if (nearest.walked) return nearest.walked;
  if (nearest.row < m_rows.size())
    return m_search.InOneRun(m_rows[nearest.row], m_last[nearest.row], number);
  if (!walks.AnyLeft()) m_nothingFrom = nearest.knownFrom;
  return {};
}

// The block is of its thread's first run, or the thread has only one run. Then nothing stops a walk
// before it, because everything before it has smaller numbers.
bool TraceSearch::IsOfFirstRun(const CExecutionBlock& block) const {
  const ThreadOrder& order = RowOf(*block.thread).order;
  return order.IsRising() || (order.Runs() && order.Runs()->IsOfFirstRun(block));
}

// The position before the leaf that would end the walk after the block, if such a leaf does end it.
// REQUIRES: the block is of its thread's first run.
NodePosition TraceSearch::LeafAfterBlock(const CExecutionBlock& block, std::uint32_t wanted) const {
  const ChildList& siblings = block.parent->children;
  const TwoRuns* const runs = RowOf(*block.thread).order.Runs();
  const std::size_t end = runs ? runs->FirstRunOf(*block.parent) : siblings.size();
  const std::size_t next = FirstAbove(siblings, wanted, 0, end);
  const bool ends =
      next < siblings.size() && siblings.IsLeaf(next) && NumberAt(siblings, next) > wanted;
  return ends ? NodePosition{block.parent, next - 1} : NodePosition();
}

TraceSearch::Nearest TraceSearch::LookInThreads(const Wanted& wanted) {
  // The walk ends at the block that the trace opened: a result without that block is not valid.
  if (wanted.block) LastOf(*wanted.block->thread).Forget();
  Nearest nearest;
  for (std::size_t row = 0; row < m_last.size() && !nearest.isTheTrace; ++row) {
    const LastFound& last = m_last[row];
    // Usually the result is known; of several equally near ones the first one counts.
    if (!last.Knows(wanted.number) || last.DistanceFrom(wanted.number) < nearest.distance)
      Look(row, wanted, nearest);
    nearest.knownFrom = std::max(nearest.knownFrom, last.from);
  }
  return nearest;
}

// Is there anything nearer in the row's thread?
void TraceSearch::Look(std::size_t index, const Wanted& wanted, Nearest& nearest) {
  ThreadRow& row = m_rows[index];
  LastFound& last = m_last[index];
  NodePosition walked;
  std::uint64_t away;
  if (row.order.IsRising()) {
    if (!last.Knows(wanted.number)) m_search.InOneRun(row, last, wanted.number);
    away = last.DistanceFrom(wanted.number);
  } else {
    // The stored result for a thread with two runs may be nearer than its final result.
    const bool hasBlock = wanted.block && wanted.block->thread == row.thread;
    walked = row.order.Runs() && !hasBlock ? m_search.InTwoRuns(row, last, wanted.number)
                                           : WalkThrough(*row.thread, last, wanted);
    away = walked ? Distance(walked, wanted.number) : LastFound::kNone;
    nearest.isTheTrace = walked && walked.Node()->event == &wanted.event;
  }
  if (away >= nearest.distance && !nearest.isTheTrace) return;
  nearest.distance = away;
  nearest.row = index;
  nearest.walked = walked;
}

// Only the absence of a hit is stored: it is valid for all greater numbers.
NodePosition TraceSearch::WalkThrough(CProcessThread& thread, LastFound& last,
                                      const Wanted& wanted) {
  const std::optional<NodePosition> place = wanted.walks.Through(thread);
  if (!place) return {};
  last.BeginSearch();
  last.from = wanted.number;
  if (*place) last.Forget();
  return *place;
}
