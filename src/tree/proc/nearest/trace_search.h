// The search for a trace's place in the procedure tree: its own leaf, or else the nearest by
// sequence number (find_node.h has the rules).
//
// Shape    Its state is beside the tree: a row per thread (thread_row.h), and counts for the few
//          nodes that have any (two_runs.h, empty_fronts.h). A thread only has the index of its
//          row.
// Owner    Owns the rows. Borrows the tree, whose owner must report each change.
// Cost     In threads whose numbers rise, in one run or two, a search does not depend on the number
//          of traces. The result for a thread is valid for all numbers near the wanted one until
//          something is added or removed there; only then the thread is searched again. A thread
//          without order is walked, unless it is known to have no hit.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <vector>

#include "tree/proc/nearest/search_in_order.h"
#include "tree/proc/nearest/thread_walks.h"

class TraceSearch {
 public:
  TraceSearch() = default;
  TraceSearch(const TraceSearch&) = delete;

  // A thread has been added to the tree.
  void OnThread(CProcessThread& thread);
  // A trace will be filed in its thread, as leaf number `leaf`, counted over all that ever came.
  void OnTrace(CProcessThread& thread, std::uint32_t number, std::uint64_t leaf);
  void OnClosed(const CExecutionBlock& block);
  // The child of a thread or block at this position has been removed.
  void OnErased(const CExecutionBlock& owner, std::size_t position);
  // A block without children that was no longer in any `children` will be destroyed.
  void OnDropped(const CExecutionBlock& block);
  // The tree is empty.
  void Clear();

  // Checks which threads have their order back, after older traces were removed. Call it before a
  // search, with the numbers of the oldest leaf and of the next one.
  void Recover(std::uint64_t oldestLeaf, std::uint64_t nextLeaf);
  // The position of the trace's leaf, or else of the nearest, which may be a block. `thread` is the
  // thread of the trace, null if it is not in the tree. The result is only valid if the walks have
  // nothing left to do.
  NodePosition Find(const CRoot& root, CProcessThread* thread, const TraceEvent_i& event,
                    ThreadWalks& walks);
  // The same for a trace without a leaf in the tree. `block` is the block that it opened, or null.
  NodePosition FindNearest(const CRoot& root, const TraceEvent_i& event, ThreadWalks& walks,
                           CExecutionBlock* block);
  // Do the numbers of all traces in the thread rise?
  bool IsInOrder(const CProcessThread& thread) const { return RowOf(thread).order.IsRising(); }

 private:
  struct Wanted;
  struct Nearest;
  ThreadRow& RowOf(const CProcessThread& thread) { return m_rows[thread.searchRow]; }
  const ThreadRow& RowOf(const CProcessThread& thread) const { return m_rows[thread.searchRow]; }
  LastFound& LastOf(const CProcessThread& thread) { return m_last[thread.searchRow]; }
  void SortRows(const CRoot& root);
  bool IsOfFirstRun(const CExecutionBlock& block) const;
  NodePosition LeafAfterBlock(const CExecutionBlock& block, std::uint32_t wanted) const;
  Nearest LookInThreads(const Wanted& wanted);
  void Look(std::size_t index, const Wanted& wanted, Nearest& nearest);
  static NodePosition WalkThrough(CProcessThread& thread, LastFound& last, const Wanted& wanted);

  std::vector<ThreadRow> m_rows;
  std::vector<LastFound> m_last;                   // of the same threads
  bool m_sorted = true;                            // by the order of the tree
  std::vector<CProcessThread*> m_broken;           // threads without order
  std::uint64_t m_nothingFrom = LastFound::kNone;  // from this number on no thread has a hit
  EmptyFronts m_empty;
  SearchInOrder m_search{m_empty};
};
