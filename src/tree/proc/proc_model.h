// The procedure tree of a document, without a control: files traces below machine, application,
// process, thread and block, times the blocks, labels the nodes, and takes trimmed traces out.
//
// Owner    Owns all nodes. Borrows the document, the filter and the items, which outlive it.
// Items    A node gets a control item when the user opens its parent, so the model asks for one only
//          below an expanded item, and for machines. It never asks for an item twice.
// Trims    The leaf of a trimmed trace goes, with its item. A trimmed trace that the filter hides
//          takes the nearest node out of the tree instead; that node is in no `children` any more,
//          but it lives on with its item and its text until its own trace is trimmed or the tree is
//          cleared. A block whose own trace is trimmed stays while it is open or holds anything, and
//          goes with its item when it is closed and empty. Level nodes stay.
// Cost     Filing and trimming do not depend on how many traces are held.
// Threads  Interface thread.
//
// A node that goes is destroyed right after ProcItems::DeleteItem: keep no pointer to a node but the
// item word, and ask for the selected item anew after RemoveTrace(s).
#pragma once

#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <unordered_map>
#include <unordered_set>
#include <vector>

#include "tree/proc/leaf_store.h"
#include "tree/proc/nodes.h"

class CTraceDoc;
class CTraceFilter;
class FilterPass;

// What the model asks of the tree control's owner.
class ProcItems {
 public:
  // Inserts the node's item as the last child of `parentItem`, or at the top level for 0; sets
  // node.treeItem and gives it, 0 when the control refuses. The node is not yet on its way to have
  // children; a node that is no leaf shows the button all the same. The same operation serves the
  // owner's own fill of an opened item.
  virtual TreeItem InsertTreeItem(TreeItem parentItem, CTraceEvent& node) = 0;
  virtual bool IsExpanded(TreeItem item) const = 0;
  virtual void SetItemText(TreeItem item, const std::string& text) = 0;
  // The item and those below it, whose nodes are gone already or go too.
  virtual void DeleteItem(TreeItem item) = 0;
  // The first machine has its item: repaint the control, and redraw from now on.
  virtual void OnFirstMachine() = 0;

 protected:
  ~ProcItems() = default;
};

// A place in some node's children.
struct NodePosition {
  CExecutionBlock* owner = nullptr;  // null: there is nothing
  std::size_t position = 0;
  explicit operator bool() const { return owner != nullptr; }
  CTraceEvent* Node() const { return owner->children[position]; }
};

class ProcModel {
 public:
  // Without items the tree is complete all the same.
  ProcModel(const CTraceDoc& document, CTraceFilter& filter, ProcItems* items = nullptr);
  ~ProcModel();
  ProcModel(const ProcModel&) = delete;
  ProcModel& operator=(const ProcModel&) = delete;

  const CRoot& Root() const { return m_root; }
  int TraceCount() const { return m_root.traceCount; }

  // Destroys all nodes and forgets the path of the last trace. Reads no trace and deletes no item:
  // the owner has emptied the control before.
  void Clear();
  // Files all traces of the document that pass, as a rebuild does, and times them at the end.
  // REQUIRES: cleared.
  void AddAll();
  // Files one trace, the newest of the document so far; 0 when it does not pass, and otherwise the
  // item that was made for it, 0 for none. `live`: durations and labels follow at once. With live
  // false they wait for UpdateDurations.
  TreeItem AddTrace(TraceEvent_i* event, bool live);
  // Around the traces of one hint: filters them in one pass, and sets the label of each node once, at
  // the end. Its scope holds AddTrace and the owner's own work on items; the filter stays as it is.
  class Batch {
   public:
    explicit Batch(ProcModel& model);
    ~Batch();
    Batch(const Batch&) = delete;
    Batch& operator=(const Batch&) = delete;

   private:
    ProcModel& m_model;
  };
  // Takes the leaf of a trace that is about to go out of the tree. The labels of the shown nodes are
  // up to date afterwards: no UpdateDurations is needed behind it, and none must be made per trim.
  void RemoveTrace(const TraceEvent_i* event);
  // The same for all traces of a hint, oldest first.
  void RemoveTraces(const std::deque<TraceEvent_i*>& events);

  // The text of a node, made anew.
  std::string NodeLabel(const CTraceEvent& node) const;
  // Sets the durations of the node and of all nodes below it, and the texts of their items.
  void UpdateDurations(CExecutionBlock& node);
  void UpdateDurations() { UpdateDurations(m_root); }
  // The position of the trace's leaf, or else that of the nearest by sequence number, which may be a
  // block; nothing when no leaf is near. REQUIRES: the trace lives.
  NodePosition FindNode(const TraceEvent_i& event);

 private:
  friend class Batch;
  CProcessThread& ThreadOf(const TraceIds& ids, TraceEvent_i* event);
  void TakeOutNearest(const TraceEvent_i& event);
  bool Passes(const TraceEvent_i& event);
  void BeginBatch();
  void EndBatch();

  const CTraceDoc& m_document;
  CTraceFilter& m_filter;
  ProcItems* const m_items;
  CRoot m_root;
  LeafStore m_leaves;
};
