// The items of a tree control, and the row of each item.
//
// Shape    An item whose parents are all expanded has a row, counted from 0 at the top; the row of
//          an item below a closed one is -1. An item takes 32 bytes. It keeps its handle and its
//          order among its siblings when others are deleted.
// Owner    The store owns the items; the data words belong to the caller.
// Errors   std::bad_alloc. Handles are not checked: 0 is the top level where a call says so.
// Cost     By the depth of the item, not by the number of items; Delete by those below the item.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <memory>
#include <vector>

#include "controls/tree/row_sums.h"
#include "controls/tree/tree_control.h"

class TreeItems final : public TreeItemPort {
 public:
  TreeItems();
  ~TreeItems();
  TreeItems(const TreeItems&) = delete;
  TreeItems& operator=(const TreeItems&) = delete;

  TreeItem InsertItem(TreeItem parent, TreeItemData data, bool hasChildren) override;
  void DeleteItem(TreeItem item) override;
  TreeItemData ItemData(TreeItem item) const override;
  unsigned ItemState(TreeItem item) const override;
  TreeItem Walk(TreeItem from, TreeStep step) const override;

  bool HasItemsBelow(TreeItem item) const;
  // REQUIRES: HasItemsBelow when `expanded`. Open a path from its lower end: then each step has a
  // constant cost, else it costs by its depth.
  void SetExpanded(TreeItem item, bool expanded);
  // Is `item` somewhere below `above`?
  bool IsBelow(TreeItem item, TreeItem above) const;
  std::int64_t Rows() const;
  std::int64_t RowOf(TreeItem item) const;
  // How many rows the item and the visible items below it take, if its parents are expanded.
  std::int64_t RowsOf(TreeItem item) const;
  TreeItem At(std::int64_t row) const;  // 0: no such row
  int Depth(TreeItem item) const;       // 0 at the top level

 private:
  struct Item;
  class Siblings;

  static Item* ItemOf(TreeItem item) { return reinterpret_cast<Item*>(item); }
  static TreeItem HandleOf(const Item* item) { return reinterpret_cast<TreeItem>(item); }
  Item* OrTop(TreeItem item) const { return item ? ItemOf(item) : m_top.get(); }
  TreeItem Sibling(const Item& item, TreeStep step) const;
  TreeItem RowAbove(const Item& item) const;
  static void RowsChanged(Item* item, std::int64_t rows);

  std::unique_ptr<Item> m_top;  // the parent of the top level; always expanded
};
