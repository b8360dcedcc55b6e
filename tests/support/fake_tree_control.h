// A tree control without a window, by the plainest means: it lays out all rows whenever it is asked
// for one.
#pragma once

#include <algorithm>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include "tree/proc/tree_control.h"

class FakeTreeControl final : public TreeControl {
 public:
  explicit FakeTreeControl(TreeControlOwner& owner) : m_owner(owner) {}

  int pageRows = 10;        // how many rows show whole
  int insertionsLeft = -1;  // 0: InsertItem fails from now on; -1: never
  int inserted = 0;
  int deleted = 0;  // by DeleteItem with an item, not those below it
  // "redraw off", "select b", "visible b", "clear".
  std::vector<std::string> calls;
  std::vector<std::string> changedTexts;
  bool redraw = true;
  bool hasKeyboard = false;

  void SetFocus() override { hasKeyboard = true; }

  TreeItem InsertItem(TreeItem parent, TreeItemData data, bool hasChildren) override {
    if (insertionsLeft == 0) return 0;
    if (insertionsLeft > 0) --insertionsLeft;
    ++inserted;
    const TreeItem item = ++m_last;
    m_items[item] = {parent, data, hasChildren ? unsigned{kTreeHasChildren} : 0U, {}};
    m_items[parent].children.push_back(item);
    if (parent) m_items[parent].state |= kTreeHasChildren;
    return item;
  }
  void DeleteItem(TreeItem item) override {
    if (item == 0) {
      calls.push_back("clear");
      m_items.clear();
      m_selected = 0;
      m_top = 0;
      return;
    }
    if (!m_items.count(item)) return;
    ++deleted;
    if (m_selected == item || IsBelow(m_selected, item)) m_selected = Heir(item);
    const std::vector<TreeItem> rows = Rows();
    const auto above = std::find(rows.begin(), rows.end(), item);
    if (above < rows.begin() + m_top) {
      const auto end =
          std::find_if(above + 1, rows.end(), [&](TreeItem each) { return !IsBelow(each, item); });
      m_top -= static_cast<int>(std::min(end, rows.begin() + m_top) - above);
    }
    std::vector<TreeItem>& siblings = m_items[m_items[item].parent].children;
    siblings.erase(std::find(siblings.begin(), siblings.end(), item));
    Forget(item);
    ClampTop();
  }
  TreeItemData ItemData(TreeItem item) const override { return item ? Get(item).data : 0; }
  unsigned ItemState(TreeItem item) const override { return item ? Get(item).state : 0; }
  void SetExpandedOnce(TreeItem item) override {
    if (m_items.count(item)) m_items[item].state |= kTreeExpandedOnce;
  }
  TreeItem Walk(TreeItem from, TreeStep step) const override {
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

  void ItemTextChanged(TreeItem item) override {
    if (item) changedTexts.push_back(TextOf(item));
  }
  void Expand(TreeItem item, bool open) override {
    if (!m_items.count(item) || !item) return;
    unsigned& state = m_items[item].state;
    if (open == ((state & kTreeExpanded) != 0) || !(state & kTreeHasChildren)) return;
    if (open) {
      m_owner.OnTreeItemExpanding(item);
      if (m_items[item].children.empty()) return;
      m_items[item].state |= kTreeExpanded | kTreeExpandedOnce;
    } else {
      if (IsBelow(m_selected, item)) m_selected = item;
      state &= ~static_cast<unsigned>(kTreeExpanded);
      ClampTop();
    }
  }
  TreeItem SelectedItem() const override { return m_selected; }
  void SelectItem(TreeItem item) override {
    if (item && !m_items.count(item)) return;
    calls.push_back("select " + TextOf(item));
    OpenAbove(item);
    m_selected = item;
  }
  void EnsureVisible(TreeItem item) override {
    if (!item || !m_items.count(item)) return;
    calls.push_back("visible " + TextOf(item));
    OpenAbove(item);
    const int row = RowOf(item);
    if (row < m_top)
      m_top = row;
    else if (row >= m_top + pageRows)
      m_top = row - std::max(pageRows, 1) + 1;
  }
  bool IsOnScreen(TreeItem item) const override {
    const int row = RowOf(item);
    return row >= m_top && row < m_top + pageRows;
  }
  void SetRedraw(bool on) override {
    calls.push_back(on ? "redraw on" : "redraw off");
    redraw = on;
  }

  // The user scrolls.
  void ScrollTo(int top) {
    m_top = top;
    ClampTop();
  }
  int Top() const { return m_top; }
  std::string TextOf(TreeItem item) const {
    return item ? m_owner.TreeItemText(ItemData(item)) : std::string();
  }
  // What is seen, a line for each row: "+" closed, "-" open, " " without children, "*" selected.
  std::string Picture() const {
    std::string picture;
    for (const TreeItem item : Rows()) {
      for (TreeItem each = Get(item).parent; each; each = Get(each).parent) picture += "  ";
      const unsigned state = Get(item).state;
      picture += !(state & kTreeHasChildren) ? " " : state & kTreeExpanded ? "-" : "+";
      picture += TextOf(item) + (item == m_selected ? "*\n" : "\n");
    }
    return picture;
  }
  // The item of the row that reads so, opened or not; 0 for none.
  TreeItem Find(const std::string& text) const {
    for (const auto& [item, content] : m_items)
      if (item && TextOf(item) == text) return item;
    return 0;
  }
  std::size_t Count() const { return m_items.size() - m_items.count(0); }

 private:
  struct Item {
    TreeItem parent = 0;
    TreeItemData data = 0;
    unsigned state = 0;
    std::vector<TreeItem> children;
  };

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
  TreeItem Heir(TreeItem item) const {
    for (const TreeStep step : {TreeStep::NextSibling, TreeStep::PreviousSibling})
      if (const TreeItem heir = Walk(item, step)) return heir;
    return Get(item).parent;
  }
  void Forget(TreeItem item) {
    for (const TreeItem child : std::vector<TreeItem>(Get(item).children)) Forget(child);
    m_items.erase(item);
  }
  void OpenAbove(TreeItem item) {
    std::vector<TreeItem> path;
    for (item = Get(item).parent; item; item = Get(item).parent) path.push_back(item);
    for (; !path.empty(); path.pop_back()) Expand(path.back(), true);
  }
  void AddRows(TreeItem below, std::vector<TreeItem>& rows) const {
    for (const TreeItem child : Get(below).children) {
      rows.push_back(child);
      if (Get(child).state & kTreeExpanded) AddRows(child, rows);
    }
  }
  std::vector<TreeItem> Rows() const {
    std::vector<TreeItem> rows;
    AddRows(0, rows);
    return rows;
  }
  int RowOf(TreeItem item) const {
    const std::vector<TreeItem> rows = Rows();
    const auto row = std::find(rows.begin(), rows.end(), item);
    return row == rows.end() ? -1 : static_cast<int>(row - rows.begin());
  }
  void ClampTop() { m_top = std::clamp(m_top, 0, std::max(int(Rows().size()) - pageRows, 0)); }

  TreeControlOwner& m_owner;
  std::map<TreeItem, Item> m_items;  // 0: the parent of the top level
  TreeItem m_last = 0;
  TreeItem m_selected = 0;
  int m_top = 0;
};
