// The items of the fake tree control, as simple as possible: all rows are computed at each request.
// An item that does not exist has no data.
#pragma once

#include <algorithm>
#include <map>
#include <vector>

#include "controls/tree/tree_control.h"

class FakeTreeItems {
 public:
  struct Item {
    TreeItem parent = 0;
    TreeItemData data = 0;
    unsigned state = 0;
    std::vector<TreeItem> children;
  };

  TreeItem Add(TreeItem parent, TreeItemData data, bool hasChildren) {
    const TreeItem item = ++m_last;
    m_items[item] = {parent, data, hasChildren ? unsigned{kTreeHasChildren} : 0U, {}};
    m_items[parent].children.push_back(item);
    if (parent) m_items[parent].state |= kTreeHasChildren;
    return item;
  }
  // With all items below it.
  void Remove(TreeItem item) {
    std::vector<TreeItem>& siblings = m_items[Get(item).parent].children;
    siblings.erase(std::find(siblings.begin(), siblings.end(), item));
    Forget(item);
  }
  void Clear() { m_items.clear(); }

  bool Has(TreeItem item) const { return m_items.count(item) != 0; }
  unsigned& State(TreeItem item) { return m_items.at(item).state; }
  const Item& Get(TreeItem item) const {
    static const Item none;
    const auto entry = m_items.find(item);
    return entry == m_items.end() ? none : entry->second;
  }
  bool IsBelow(TreeItem item, TreeItem above) const {
    while (item && (item = Get(item).parent) != above) {
    }
    return item != 0;
  }
  TreeItem Walk(TreeItem from, TreeStep step) const {
    const Item& item = Get(from);
    if (step == TreeStep::FirstChild) return item.children.empty() ? 0 : item.children.front();
    if (step == TreeStep::LastChild) return item.children.empty() ? 0 : item.children.back();
    if (!from) return 0;
    if (step == TreeStep::Parent) return item.parent;
    if (step == TreeStep::PreviousVisible) {
      const std::vector<TreeItem> rows = Rows();
      const auto row = std::find(rows.begin(), rows.end(), from);
      return row == rows.end() || row == rows.begin() ? 0 : *(row - 1);
    }
    const std::vector<TreeItem>& siblings = Get(item.parent).children;
    const auto place = std::find(siblings.begin(), siblings.end(), from);
    if (step == TreeStep::PreviousSibling) return place == siblings.begin() ? 0 : *(place - 1);
    return place + 1 == siblings.end() ? 0 : *(place + 1);
  }
  // In the order of their insertion.
  std::vector<TreeItem> All() const {
    std::vector<TreeItem> all;
    for (const auto& [item, content] : m_items)
      if (item) all.push_back(item);
    return all;
  }
  // From the top, without what is below a closed item.
  std::vector<TreeItem> Rows() const {
    std::vector<TreeItem> rows;
    AddRows(0, rows);
    return rows;
  }

 private:
  void Forget(TreeItem item) {
    for (const TreeItem child : std::vector<TreeItem>(Get(item).children)) Forget(child);
    m_items.erase(item);
  }
  void AddRows(TreeItem below, std::vector<TreeItem>& rows) const {
    for (const TreeItem child : Get(below).children) {
      rows.push_back(child);
      if (Get(child).state & kTreeExpanded) AddRows(child, rows);
    }
  }

  std::map<TreeItem, Item> m_items;  // 0: the parent of the top level
  TreeItem m_last = 0;
};
