// Makes the missing items for the children of an opened node, in parts: those after the last child
// that has an item. If it is stopped, the first children have items, and the next fill continues
// after them.
//
// Owner    Borrows items and children. REQUIRES: there are children, and nothing changes until it
//          is done.
// Errors   A failed insertion ends the fill.
// Threads  Interface thread.
#pragma once

#include "docview/dialogs/long_work.h"
#include "tree/proc/model/proc_items.h"
#include "tree/proc/nodes/nodes.h"

class ItemFill final : public LongWork {
 public:
  // `item` is the item of the children's node.
  ItemFill(ProcItems& items, TreeItem item, const ChildList& children)
      : m_items(items),
        m_item(item),
        m_children(children),
        m_counted(!children[0]->treeItem),
        m_next(m_counted ? 0 : children.size()) {}

  bool DoPart() override;
  std::optional<int> Progress() const override;

 private:
  ProcItems& m_items;
  const TreeItem m_item;
  const ChildList& m_children;
  bool m_counted;
  std::size_t m_next;  // the first child without an item, once they are counted
};
