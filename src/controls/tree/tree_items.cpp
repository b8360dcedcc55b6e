#include "controls/tree/tree_items.h"

#include <utility>

#include "controls/tree/tree_siblings.h"

TreeItems::TreeItems() : m_top(std::make_unique<Item>()) {
  m_top->state = kTreeExpanded;
}

TreeItems::~TreeItems() {
  DeleteItem(0);
}

TreeItem TreeItems::InsertItem(TreeItem parent, TreeItemData data, bool hasChildren) {
  Item* const above = OrTop(parent);
  if (!above->children) above->children = new Siblings;
  Item* const item = above->children->Append();
  item->parent = above;
  item->data = data;
  if (hasChildren) item->state |= kTreeHasChildren;
  above->state |= kTreeHasChildren;
  if (above->state & kTreeExpanded) RowsChanged(above, 1);
  return HandleOf(item);
}

// A loop, because items may nest 100,000 deep.
void TreeItems::DeleteItem(TreeItem handle) {
  Item* const item = OrTop(handle);
  if (item->parent) {
    const std::int64_t rows = item->Rows();
    if (item->parent->state & kTreeExpanded) RowsChanged(item->parent, -rows);
    item->parent->children->AddRows(item->number, -rows);
  }
  std::vector<std::unique_ptr<Siblings>> doomed;
  const auto take = [&doomed](Item& each) {
    if (each.children) doomed.emplace_back(std::exchange(each.children, nullptr));
  };
  take(*item);
  while (!doomed.empty()) {
    const std::unique_ptr<Siblings> siblings = std::move(doomed.back());
    doomed.pop_back();
    siblings->ForEach(take);
  }
  if (item->parent) {
    Siblings& siblings = *item->parent->children;
    siblings.Remove(*item);
  }
}

TreeItemData TreeItems::ItemData(TreeItem item) const {
  return item ? ItemOf(item)->data : 0;
}

unsigned TreeItems::ItemState(TreeItem item) const {
  return item ? ItemOf(item)->state : 0;
}

TreeItem TreeItems::Walk(TreeItem from, TreeStep step) const {
  if (!from && step != TreeStep::FirstChild && step != TreeStep::LastChild) return 0;
  const Item& item = *OrTop(from);
  switch (step) {
    case TreeStep::Parent:
      return item.parent == m_top.get() ? 0 : HandleOf(item.parent);
    case TreeStep::FirstChild:
      return HasItemsBelow(from) ? HandleOf(item.children->At(0)) : 0;
    case TreeStep::LastChild:
      return HasItemsBelow(from) ? HandleOf(item.children->Last()) : 0;
    case TreeStep::PreviousVisible:
      return RowAbove(item);
    default:
      return Sibling(item, step);
  }
}

TreeItem TreeItems::RowAbove(const Item& item) const {
  const Item* above = item.parent;
  do {
    if (!(above->state & kTreeExpanded)) return 0;
    above = above->parent;
  } while (above);
  const Item* const beside = item.parent->children->Beside(item, false);
  return beside && beside->Rows() == 1 ? HandleOf(beside) : At(RowOf(HandleOf(&item)) - 1);
}

TreeItem TreeItems::Sibling(const Item& item, TreeStep step) const {
  Siblings& siblings = *item.parent->children;
  if (Item* const beside = siblings.Beside(item, step == TreeStep::NextSibling))
    return HandleOf(beside);
  const std::int64_t row = siblings.RowsBefore(item.number);
  if (step == TreeStep::PreviousSibling) return row ? HandleOf(siblings.At(row - 1)) : 0;
  const std::int64_t behind = row + item.Rows();
  return behind < siblings.Rows() ? HandleOf(siblings.At(behind)) : 0;
}

bool TreeItems::HasItemsBelow(TreeItem item) const {
  const Siblings* const children = OrTop(item)->children;
  return children && children->Rows() > 0;
}

void TreeItems::SetExpanded(TreeItem handle, bool expanded) {
  Item& item = *ItemOf(handle);
  if (((item.state & kTreeExpanded) != 0) == expanded) return;
  const std::int64_t rows = item.children ? item.children->Rows() : 0;
  item.state =
      expanded ? item.state | kTreeExpanded : item.state & ~static_cast<unsigned>(kTreeExpanded);
  item.parent->children->AddRows(item.number, expanded ? rows : -rows);
  if (item.parent->state & kTreeExpanded) RowsChanged(item.parent, expanded ? rows : -rows);
}

bool TreeItems::IsBelow(TreeItem item, TreeItem above) const {
  if (!item) return false;
  const Item* const wanted = OrTop(above);
  for (const Item* each = ItemOf(item)->parent; each; each = each->parent)
    if (each == wanted) return true;
  return false;
}

std::int64_t TreeItems::Rows() const {
  return m_top->children ? m_top->children->Rows() : 0;
}

std::int64_t TreeItems::RowsOf(TreeItem item) const {
  return ItemOf(item)->Rows();
}

std::int64_t TreeItems::RowOf(TreeItem handle) const {
  std::int64_t row = -1;
  for (const Item* item = ItemOf(handle); item && item->parent; item = item->parent) {
    if (!(item->parent->state & kTreeExpanded)) return -1;
    row += 1 + item->parent->children->RowsBefore(item->number);
  }
  return row;
}

TreeItem TreeItems::At(std::int64_t row) const {
  if (row < 0 || row >= Rows()) return 0;
  for (const Item* above = m_top.get();;) {
    const Item* const item = above->children->At(row);
    row -= above->children->RowsBefore(item->number);
    if (row == 0) return HandleOf(item);
    --row;  // the row of the item itself
    above = item;
  }
}

int TreeItems::Depth(TreeItem handle) const {
  int depth = -1;
  for (const Item* item = ItemOf(handle); item && item->parent; item = item->parent) ++depth;
  return depth;
}

// The number of rows below the expanded `item` has changed: updates the sums of its parents.
void TreeItems::RowsChanged(Item* item, std::int64_t rows) {
  for (; item->parent; item = item->parent) {
    item->parent->children->AddRows(item->number, rows);
    if (!(item->parent->state & kTreeExpanded)) return;
  }
}
