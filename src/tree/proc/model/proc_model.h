// The procedure tree of a document, without a control: files traces below machine, application,
// process, thread and block, times the blocks, labels the nodes, and removes trimmed traces.
//
// Owner    Owns all nodes. Borrows the document, the filter and the items, which outlive it.
// Items    A node gets a control item when the user opens its parent. So the model asks for an item
//          only below an expanded item, and for machines.
// Trims    The leaf of a trimmed trace is removed with its item. If a trimmed trace has no leaf,
//          because the filter hides it, the nearest node is removed instead: it is in no `children`
//          any more, but lives on with its item and text until its own trace is trimmed or the tree
//          is cleared. A block whose own trace was trimmed is removed with its item once it is
//          closed and empty. Level nodes stay.
// Cost     No step grows with the traces held if each thread's numbers rise: thread_order.h.
// Threads  Interface thread.
#pragma once

#include <deque>
#include <unordered_set>

#include "tree/filter/filter_pass.h"
#include "tree/proc/model/proc_items.h"
#include "tree/proc/model/proc_labels.h"
#include "tree/proc/model/trace_facts.h"
#include "tree/proc/nearest/trace_search.h"
#include "tree/proc/nodes/block_store.h"
#include "tree/proc/nodes/leaf_store.h"
#include "tree/proc/nodes/level_index.h"
#include "tree/proc/nodes/word_pool.h"

class CTraceDoc;

class ProcModel {
 public:
  // Without items the tree is complete too.
  ProcModel(const CTraceDoc& document, CTraceFilter& filter, ProcItems* items = nullptr);
  ProcModel(const ProcModel&) = delete;

  const CRoot& Root() const { return m_root; }
  int TraceCount() const { return m_root.traceCount; }
  const CTraceFilter& Filter() const { return *m_filter; }
  void UseFilter(CTraceFilter& filter) { m_filter = &filter; }  // REQUIRES: no batch

  // Destroys all nodes. Reads no trace and deletes no item: the owner has emptied the control.
  void Clear();
  // Files all traces of the document and times them; ProcBuild (proc_build.h) does the same in
  // parts. REQUIRES: empty.
  void AddAll();
  // From now on these items show a tree that was built without items: makes those of the machines.
  void ShowBy(ProcItems& items);
  // Files one trace, the newest of the document. Returns the item made for it; 0 for none. `live`:
  // durations and labels are updated immediately; otherwise UpdateDurations does it.
  TreeItem AddTrace(TraceEvent_i* event, bool live);
  TreeItem File(TraceEvent_i* event, bool live);  // the same without the filter
  // Encloses the traces of one hint: they share a filter pass, and each label is set once, at the
  // end. The filter does not change meanwhile, and nothing is removed.
  class Batch {
   public:
    explicit Batch(ProcModel& model) : m_model(model) { m_model.BeginBatch(); }
    ~Batch() { m_model.EndBatch(); }

   private:
    ProcModel& m_model;
  };
  // Removes the leaf of a trace that will be released, or those of a hint's traces, oldest first.
  // Durations stay and labels are updated. Only a whole tree has the nearest node of another trace.
  enum class Hidden { TakesNearest, TakesNothing };
  void RemoveTrace(TraceEvent_i* event) { RemoveTraces({event}); }
  void RemoveTraces(const std::deque<TraceEvent_i*>& events, Hidden hidden = Hidden::TakesNearest);
  std::string NodeLabel(const CTraceEvent& node) const { return m_labels.Of(node); }
  // Sets the durations of all nodes, and the texts of their items; or part number `part` of that
  // work, from 0: false when there is no such part.
  void UpdateDurations();
  bool UpdateDurations(std::size_t part);
  // The position of the trace's leaf, or else of the nearest by sequence number, which may be a
  // block; none when no leaf is near. REQUIRES: the trace lives.
  NodePosition FindNode(const TraceEvent_i& event);
  NodePosition FindNode(const TraceEvent_i& event, ThreadWalks& walks);  // a try: thread_walks.h
  bool IsInOrder(const CProcessThread& thread) const { return m_search.IsInOrder(thread); }

 private:
  void BeginBatch();
  void EndBatch();
  CProcessThread& ThreadOf(const TraceFacts& facts, TraceEvent_i* event);
  CProcessThread& MakePath(const TraceFacts& facts, TraceEvent_i* event);
  void AddChild(CExecutionBlock& block, CProcessThread& thread, TraceEvent_i* event,
                std::uint64_t tic);
  CExecutionBlock& OpenBlock(CExecutionBlock& around, CProcessThread& thread, TraceEvent_i* event,
                             const TraceFacts& facts);
  void CloseBlock(CExecutionBlock& block, CProcessThread& thread, bool live);
  TreeItem InsertItem(CTraceEvent& node, bool wanted);
  bool IsOpen(const CTraceEvent& node) const;
  void TimeTouched();
  void RemoveOne(const TraceEvent_i& event, bool oldest, Hidden hidden);
  std::size_t FindLeaf(const TraceEvent_i& event, bool oldest) const;
  bool IsInTree(const CTraceEvent& leaf) const;
  void RemoveLeaf(std::size_t position);
  void TakeOut(NodePosition place);
  void EraseChild(NodePosition place);
  void ForgetTrace(const TraceEvent_i& event, bool oldest);
  void DropIfSpent(CExecutionBlock* block);

  const CTraceDoc& m_document;
  CTraceFilter* m_filter;
  ProcItems* m_items;
  CRoot m_root;
  LeafStore m_leaves;
  BlockStore m_blocks;
  LevelIndex m_levels;
  WordPool m_words;  // of all children
  ProcLabels m_labels;
  // The thread of the last trace, or null, and its ids: the cached path through all levels.
  CProcessThread* m_threadCursor = nullptr;
  std::uint64_t m_threadKey = 0;
  TraceSearch m_search;
  // Nodes with children whose trace has not been trimmed, by the arrival of that trace.
  std::deque<CExecutionBlock*> m_made;
  std::unordered_set<const CTraceEvent*> m_takenOutLeaves;
  unsigned m_batches = 0;
  std::unique_ptr<FilterPass> m_pass;      // of the running batch
  std::vector<CProcessThread*> m_touched;  // by live traces, times not updated yet
};
