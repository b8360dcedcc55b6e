// The operations that the procedure tree's model needs from the owner of the tree control.
//
// A removed node is destroyed right after DeleteItem. So keep no pointer to a node except the one
// in the item's data, and read the selected item again after a trim.
#pragma once

#include "tree/proc/nodes/nodes.h"

class ProcItems {
 public:
  // Inserts the node's item as the last child of `parentItem`, or at the top level for 0. Sets
  // node.treeItem and returns it; 0 when the control refuses. A node that is not a leaf gets its
  // expand button immediately, because its items are made later. So does the fill of an opened
  // item.
  virtual TreeItem InsertTreeItem(TreeItem parentItem, CTraceEvent& node) = 0;
  virtual bool IsExpanded(TreeItem item) const = 0;
  // The text of the node's item is now ProcModel::NodeLabel(node). The node has an item.
  virtual void OnLabelChanged(CTraceEvent& node) = 0;
  // The item has no items below it any more.
  virtual void DeleteItem(TreeItem item) = 0;
  // The first machine has its item: repaint the control, and redraw changes from now on.
  virtual void OnFirstMachine() = 0;

 protected:
  ~ProcItems() = default;
};
