// What the procedure tree's model asks of the owner of the tree control.
//
// A node that goes is destroyed right after DeleteItem: keep no pointer to a node but the one in
// the item's word, and ask for the selected item anew after a trim.
#pragma once

#include "tree/proc/nodes/nodes.h"

class ProcItems {
 public:
  // Inserts the node's item as the last child of `parentItem`, or at the top level for 0; sets
  // node.treeItem and gives it, 0 when the control refuses. A node that is no leaf shows its button
  // at once: the model has it filled only later. The owner's fill of an opened item does the same.
  virtual TreeItem InsertTreeItem(TreeItem parentItem, CTraceEvent& node) = 0;
  virtual bool IsExpanded(TreeItem item) const = 0;
  // The text of the node's item is now ProcModel::NodeLabel(node). The node has an item.
  virtual void OnLabelChanged(CTraceEvent& node) = 0;
  // The item has no items below it any more.
  virtual void DeleteItem(TreeItem item) = 0;
  // The first machine has its item: repaint the control, and redraw from now on.
  virtual void OnFirstMachine() = 0;

 protected:
  ~ProcItems() = default;
};
