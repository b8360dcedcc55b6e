// The items that the children of an opened node lack, made in parts: those behind the last child
// that has one. Stopped in between it leaves a run of items at the front, and the next fill goes on
// behind it.
//
// Owner    Borrows items and children. REQUIRES: there are children; nothing changes while it is
//          under way.
// Errors   An insertion that fails ends the fill.
// Threads  Interface thread.
#pragma once

#include "docview/long_work.h"
#include "tree/proc/model/proc_items.h"
#include "tree/proc/nodes/nodes.h"

class ItemFill final : public LongWork {
 public:
  // `item` is that of the children's node.
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
