// The search for a trace's place in the procedure tree: its own leaf, or else the nearest by
// sequence number (find_node.h has the rules).
//
// Shape    What it knows stands beside the tree: a row per thread (thread_row.h), and counts for
//          the few nodes that have any (two_runs.h, empty_fronts.h). A thread keeps only the place
//          of its row.
// Owner    Owns the rows. Borrows the tree, whose owner tells of each change.
// Cost     In threads whose numbers rise, in one run or two, a search does not depend on how many
//          traces there are: what it has found in a thread holds for all numbers about the wanted
//          one until something comes or goes there, and only then the thread is searched anew. A
//          thread without order is walked, unless it is known to have nothing.
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

  // A thread has come into the tree.
  void OnThread(CProcessThread& thread);
  // A trace is about to be filed in its thread, as leaf number `leaf`, ever counted.
  void OnTrace(CProcessThread& thread, std::uint32_t number, std::uint64_t leaf);
  void OnClosed(const CExecutionBlock& block);
  // The child of a thread or block at this position has gone.
  void OnErased(const CExecutionBlock& owner, std::size_t position);
  // A block that was in no other's children any more is about to go.
  void OnDropped(const CExecutionBlock& block);
  // The tree is empty.
  void Clear();

  // Looks which threads have their order again, now that older traces have gone. To be called
  // before a search, with the numbers of the oldest leaf and of the next one, ever counted.
  void Recover(std::uint64_t oldestLeaf, std::uint64_t nextLeaf);
  // The position of the trace's leaf, or else that of the nearest, which may be a block. `thread`
  // is the one that the trace belongs to, null when the tree lacks it. Means nothing while the
  // walks have any left.
  NodePosition Find(const CRoot& root, CProcessThread* thread, const TraceEvent_i& event,
                    ThreadWalks& walks);
  // The same for a trace that has no leaf in the tree. `block` is the one that it has opened, null
  // for none.
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
  void ForgetAll(CProcessThread& thread);
  void SortRows(const CRoot& root);
  bool IsOfFirstRun(const CExecutionBlock& block) const;
  NodePosition LeafAfterBlock(const CExecutionBlock& block, std::uint32_t wanted) const;
  Nearest LookInThreads(const Wanted& wanted);
  void Look(std::size_t index, const Wanted& wanted, Nearest& nearest);
  static NodePosition WalkThrough(CProcessThread& thread, LastFound& last, const Wanted& wanted);

  std::vector<ThreadRow> m_rows;
  std::vector<LastFound> m_last;                   // of the same threads
  bool m_sorted = true;                            // by the order of the tree
  std::vector<CProcessThread*> m_broken;           // not in order
  std::uint64_t m_nothingFrom = LastFound::kNone;  // from this number on no thread has anything
  EmptyFronts m_empty;
  SearchInOrder m_search{m_empty};
};
