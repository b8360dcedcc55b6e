// The properties dialog's cursor over the items of a tree: all of them, in the order of the tree,
// including level nodes and blocks. So the trace of a Begin comes twice: as its block and as the
// first leaf of the block.
//
// Owner    Borrows the view. While the dialog runs, a monitor adds and trims traces. When the
//          current trace is removed, `current` becomes null; when the current item is deleted, the
//          cursor moves to the selected item.
// Long     A move that opens a large node shows a box; after a cancel the cursor stays.
// Threads  Interface thread.
#pragma once

#include "listview/details/trace_iterator.h"
#include "tree/proc/proc_view.h"

class CProcViewIterator : public CTraceIterator {
 public:
  CProcViewIterator(CProcView& view, TreeItem item);
  ~CProcViewIterator() override;
  CProcViewIterator(const CProcViewIterator&) = delete;
  CProcViewIterator& operator=(const CProcViewIterator&) = delete;

  void Next() override;
  void Prev() override;
  // HasNext fills the tree as far as it looks.
  bool HasNext() const override;
  bool HasPrev() const override;

  void OnTracesGone(const CTraceHint& hint);
  void OnItemGone(TreeItem item);
  void OnItemsGone();

 private:
  TreeItem Place() const;
  bool FillBefore(TreeItem place);
  void MoveTo(TreeItem item);

  CProcView& m_view;
  TreeItem m_item;  // 0: it was deleted
};
