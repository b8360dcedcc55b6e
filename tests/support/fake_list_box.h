// A list box without a screen: items, selection, a page of rows, the focus. A person clicks on what
// stands in the page, and types only while the list box has the focus.
#pragma once

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "controls/listbox/list_box.h"
#include "controls/listbox/list_box_items.h"

class FakeListBox final : public ListBox {
 public:
  explicit FakeListBox(ListBoxOwner& owner, ListBoxMode mode = ListBoxMode::One)
      : m_owner(owner), m_mode(mode) {}

  void SetFocus() override { m_focus = true; }
  void SetRedraw(bool on) override {
    m_redraw = on;
    Paint();
  }
  void ResetContent() override {
    m_items.Clear();
    m_selected.clear();
    m_current = -1;
    m_top = 0;
    Paint();
  }
  int AddString(const std::string& text, std::uintptr_t data) override {
    ++m_calls;
    const int place = m_items.PlaceOf(text);
    m_items.Insert(place, text, data);
    std::set<int> moved;
    for (const int item : m_selected) moved.insert(item + (item >= place));
    m_selected.swap(moved);
    m_current += m_current >= place;
    Paint();
    return place;
  }
  void DeleteString(int item) override {
    if (!m_items.Has(item)) return;
    m_items.Erase(item);
    m_selected.erase(item);
    std::set<int> moved;
    for (const int each : m_selected) moved.insert(each - (each > item));
    m_selected.swap(moved);
    m_current = m_current == item ? -1 : m_current - (m_current > item);
    m_top = std::clamp(m_top, 0, std::max(0, Count() - m_page));
  }
  int Count() const override { return ++m_calls, m_items.Count(); }
  std::string Text(int item) const override { return ++m_calls, m_items.Text(item); }
  std::uintptr_t Data(int item) const override { return m_items.Data(item); }
  int FindStringExact(const std::string& text) const override { return m_items.FindExact(text); }
  int CurSel() const override {
    if (m_selected.contains(m_current)) return m_current;
    return m_selected.empty() ? -1 : *m_selected.begin();
  }
  void SetCurSel(int item) override {
    m_selected.clear();
    m_current = m_items.Has(item) ? item : -1;
    if (m_current < 0) return;
    m_selected.insert(item);
    m_top = std::clamp(m_top, std::max(0, item - m_page + 1), item);
  }
  void SetSel(int item, bool on) override {
    ++m_calls;
    if (on && m_items.Has(item)) m_selected.insert(item);
    if (!on) m_selected.erase(item);
  }
  void SelectOnly(std::vector<int> items) override {
    ++m_calls;
    m_selected.clear();
    for (const int item : items)
      if (m_items.Has(item)) m_selected.insert(item);
  }
  bool IsSelected(int item) const override { return ++m_calls, m_selected.contains(item); }
  int SelectedCount() const override { return ++m_calls, static_cast<int>(m_selected.size()); }
  int TopIndex() const override { return m_top; }
  int CountPerPage() const override { return m_page; }

  // What a person sees and does.
  int TakeCalls() { return std::exchange(m_calls, 0); }  // of its owner, since the last look
  void SetPage(int rows) { m_page = rows; }
  bool HasFocus() const { return m_focus; }
  void LoseFocus() { m_focus = false; }
  bool IsPainted() const { return m_redraw; }
  int Paints() const { return m_paints; }  // since it was made
  bool IsSeen(int item) const { return item >= m_top && item < m_top + m_page && item < Count(); }
  void Click(int item, bool control = false) {
    m_focus = true;
    if (!IsSeen(item)) return;
    if (!control || m_mode == ListBoxMode::One) return Select({item}, item);
    std::set<int> selected = m_selected;
    if (!selected.erase(item)) selected.insert(item);
    Select(selected, item);
  }
  void DoubleClick(int item) {
    Click(item);
    if (IsSeen(item)) m_owner.OnListBoxDoubleClick();
  }
  void RightClick(int item) {
    m_focus = true;
    if (IsSeen(item) && !IsSelected(item)) Select({item}, item);
    m_owner.OnListBoxContextMenu(10, 20 * item);
  }
  // False: the window gets the key.
  bool Press(ListBoxKey key) { return m_focus && m_owner.OnListBoxKey(key); }

 private:
  void Paint() { m_paints += m_redraw; }

  void Select(const std::set<int>& selected, int current) {
    m_current = current;
    if (std::exchange(m_selected, selected) != selected) m_owner.OnListBoxSelection();
  }

  ListBoxOwner& m_owner;
  const ListBoxMode m_mode;
  ListBoxItems m_items;
  std::set<int> m_selected;
  int m_current = -1, m_top = 0, m_page = 10, m_paints = 0;
  mutable int m_calls = 0;
  bool m_focus = false, m_redraw = true;
};
