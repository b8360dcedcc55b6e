// A tree control without a window, as simple as possible.
#pragma once

#include <algorithm>
#include <memory>
#include <string>
#include <utility>
#include <vector>

#include "controls/tree/tree_control.h"
#include "support/fake_tree_items.h"
#include "support/sized_control.h"

class FakeTreeControl final : public TreeControl, public SizedControl {
 public:
  explicit FakeTreeControl(TreeControlOwner& owner) : m_owner(owner) {}

  int pageRows = 10;         // how many rows are fully visible
  int insertionsLeft = -1;   // 0: InsertItem fails from now on; -1: never
  int failingInsertion = 0;  // the one with this number fails, counted down to 1; 0: none
  int inserted = 0;
  int deleted = 0;  // by DeleteItem with an item, without those below it
  // "redraw off", "select b", "visible b", "clear".
  std::vector<std::string> calls;
  std::vector<std::string> changedTexts;
  bool redraw = true;
  int repaints = 0;
  bool hasKeyboard = false;

  void SetFocus() override { hasKeyboard = true; }
  void SetHeight(int heightPx) override {
    pageRows = heightPx / kRowHeightPx;
    ClampTop();
  }

  TreeItem InsertItem(TreeItem parent, TreeItemData data, bool hasChildren) override {
    if (insertionsLeft == 0) return 0;
    if (failingInsertion > 0 && --failingInsertion == 0) return 0;
    if (insertionsLeft > 0) --insertionsLeft;
    ++inserted;
    return m_items.Add(parent, data, hasChildren);
  }
  void DeleteItem(TreeItem item) override {
    if (item == 0) {
      calls.push_back("clear");
      MoveSelection(0);
      m_items.Clear();
      m_top = 0;
      return;
    }
    if (!m_items.Has(item)) return;
    ++deleted;
    if (m_selected == item || m_items.IsBelow(m_selected, item))
      MoveSelection(SelectionAfterDelete(item));
    const std::vector<TreeItem> rows = m_items.Rows();
    const auto above = std::find(rows.begin(), rows.end(), item);
    if (above < rows.begin() + m_top) {
      const auto end = std::find_if(above + 1, rows.end(),
                                    [&](TreeItem each) { return !m_items.IsBelow(each, item); });
      m_top -= static_cast<int>(std::min(end, rows.begin() + m_top) - above);
    }
    m_items.Remove(item);
    ClampTop();
  }
  TreeItemData ItemData(TreeItem item) const override { return item ? m_items.Get(item).data : 0; }
  unsigned ItemState(TreeItem item) const override { return item ? m_items.Get(item).state : 0; }
  TreeItem Walk(TreeItem from, TreeStep step) const override { return m_items.Walk(from, step); }

  void ItemTextChanged(TreeItem item) override {
    if (item) changedTexts.push_back(TextOf(item));
  }
  void Expand(TreeItem item, bool open) override {
    if (!m_items.Has(item) || !item) return;
    unsigned& state = m_items.State(item);
    if (open == ((state & kTreeExpanded) != 0) || !(state & kTreeHasChildren)) return;
    if (open) {
      if (!m_owner.OnTreeItemExpanding(item) || m_items.Get(item).children.empty()) return;
      m_items.State(item) |= kTreeExpanded;
    } else {
      if (m_items.IsBelow(m_selected, item)) MoveSelection(item);
      state &= ~static_cast<unsigned>(kTreeExpanded);
      ClampTop();
    }
  }
  TreeItem SelectedItem() const override { return m_selected; }
  void SelectItem(TreeItem item) override {
    if (item && !m_items.Has(item)) return;
    calls.push_back("select " + TextOf(item));
    if (OpenAbove(item)) MoveSelection(item);
  }
  void EnsureVisible(TreeItem item) override {
    if (!item || !m_items.Has(item)) return;
    calls.push_back("visible " + TextOf(item));
    if (!OpenAbove(item)) return;
    const int row = RowOf(item);
    if (row < m_top)
      m_top = row;
    else if (row >= m_top + pageRows)
      m_top = row - std::max(pageRows, 1) + 1;
  }
  std::int64_t RowsOf(TreeItem item) const override {
    const std::vector<TreeItem> rows = m_items.Rows();
    return std::count_if(rows.begin(), rows.end(), [&](TreeItem each) {
      return each == item || m_items.IsBelow(each, item);
    });
  }
  void ShowHit(TreeItem item) override { calls.push_back("hit " + TextOf(item)); }
  bool IsOnScreen(TreeItem item) const override {
    const int row = RowOf(item);
    return row >= m_top && row < m_top + pageRows;
  }
  void SetRedraw(bool on) override {
    calls.push_back(on ? "redraw on" : "redraw off");
    redraw = on;
  }
  void Repaint() override { ++repaints; }

  // The user scrolls.
  void ScrollTo(int top) {
    m_top = top;
    ClampTop();
  }
  int Top() const { return m_top; }
  std::string TextOf(TreeItem item) const {
    return item ? m_owner.TreeItemText(ItemData(item)) : std::string();
  }
  // The visible items, a line for each row: "+" closed, "-" open, " " without children, "*"
  // selected.
  std::string Picture() const {
    std::string picture;
    for (const TreeItem item : m_items.Rows()) {
      for (TreeItem each = m_items.Get(item).parent; each; each = m_items.Get(each).parent)
        picture += "  ";
      const unsigned state = m_items.Get(item).state;
      picture += !(state & kTreeHasChildren) ? " " : state & kTreeExpanded ? "-" : "+";
      picture += TextOf(item) + (item == m_selected ? "*\n" : "\n");
    }
    return picture;
  }
  // The item of the row with this text, opened or not; 0 for none.
  TreeItem Find(const std::string& text) const {
    for (const TreeItem item : m_items.All())
      if (TextOf(item) == text) return item;
    return 0;
  }
  std::size_t Count() const { return m_items.All().size(); }

 private:
  void MoveSelection(TreeItem item) {
    if (std::exchange(m_selected, item) != item) m_owner.OnTreeSelectionChanged();
  }
  TreeItem SelectionAfterDelete(TreeItem item) const {
    for (const TreeStep step : {TreeStep::NextSibling, TreeStep::PreviousSibling})
      if (const TreeItem heir = Walk(item, step)) return heir;
    return m_items.Get(item).parent;
  }
  bool OpenAbove(TreeItem item) {
    std::vector<TreeItem> path;
    for (item = m_items.Get(item).parent; item; item = m_items.Get(item).parent)
      path.push_back(item);
    for (; !path.empty(); path.pop_back()) {
      Expand(path.back(), true);
      if (!(ItemState(path.back()) & kTreeExpanded)) return false;
    }
    return true;
  }
  int RowOf(TreeItem item) const {
    const std::vector<TreeItem> rows = m_items.Rows();
    const auto row = std::find(rows.begin(), rows.end(), item);
    return row == rows.end() ? -1 : static_cast<int>(row - rows.begin());
  }
  void ClampTop() {
    m_top = std::clamp(m_top, 0, std::max(int(m_items.Rows().size()) - pageRows, 0));
  }

  TreeControlOwner& m_owner;
  FakeTreeItems m_items;
  TreeItem m_selected = 0;
  int m_top = 0;
};
