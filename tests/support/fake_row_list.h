// A row list without a window: it has columns, states and a scroll position as the interface
// demands, and records its calls.
#pragma once

#include <algorithm>
#include <iterator>
#include <map>
#include <string>
#include <utility>
#include <vector>

#include "controls/list/row_list.h"
#include "support/fake_list_header.h"
#include "support/sized_control.h"

class FakeRowList final : public RowList, public FakeListHeader, public SizedControl {
 public:
  explicit FakeRowList(RowListOwner& owner) : m_owner(owner) {}

  // How many rows are fully visible; SetPage acts like a change of size.
  int pageRows = 10;
  // "count 5", "delete 0 2", "state 3 2/3" (state/mask), "visible 4", "redraw on": the calls that
  // change something.
  std::vector<std::string> calls;
  int fullPaints = 0;  // redrawing switched on
  int repaints = 0;
  int rowPaints = 0;  // states and scrolling that became visible while redrawing is off
  bool redraw = true;
  bool hasKeyboard = false;
  bool endMark = false;

  void SetFocus() override { hasKeyboard = true; }
  void SetHeight(int heightPx) override { SetPage(heightPx / kRowHeightPx); }
  void SetPage(int rows) {
    const bool atEnd = m_top + CountPerPage() >= m_count;
    const int before = CountPerPage();
    pageRows = rows;
    SetTop(atEnd ? m_count : m_top);
    if (CountPerPage() != before) m_owner.OnRowListScrolled();
  }

  void SetItemCount(int rows) override {
    calls.push_back("count " + std::to_string(rows));
    m_count = std::max(rows, 0);
    m_states.erase(m_states.lower_bound(m_count), m_states.end());
    SetTop(m_top);
  }
  int ItemCount() const override { return m_count; }

  void DeleteRows(int first, int count) override {
    calls.push_back("delete " + std::to_string(first) + " " + std::to_string(count));
    if (first < 0 || first >= m_count || count <= 0) return;
    count = std::min(count, m_count - first);
    std::map<int, unsigned> kept;
    for (const auto& [row, state] : m_states)
      if (row < first)
        kept.emplace(row, state);
      else if (row >= first + count)
        kept.emplace(row - count, state);
    m_states = std::move(kept);
    m_count -= count;
    SetTop(first < m_top ? m_top - std::min(count, m_top - first) : m_top);
    Painted();
  }

  void SetItemState(int row, unsigned state, unsigned mask) override {
    calls.push_back("state " + std::to_string(row) + " " + std::to_string(state) + "/" +
                    std::to_string(mask));
    if (row == -1)
      SetAll(state, mask);
    else if (row >= 0 && row < m_count)
      SetOne(row, state, mask);
  }
  unsigned GetItemState(int row) const override {
    const auto entry = m_states.find(row);
    return entry == m_states.end() ? 0 : entry->second;
  }
  int NextItem(int after, unsigned states) const override {
    for (auto entry = m_states.upper_bound(after); entry != m_states.end(); ++entry)
      if (entry->second & states) return entry->first;
    return -1;
  }
  int SelectedCount() const override {
    return static_cast<int>(std::count_if(m_states.begin(), m_states.end(), [](const auto& entry) {
      return (entry.second & kRowSelected) != 0;
    }));
  }

  RowRanges Selection() const override {
    RowRanges rows;
    for (const auto& [row, state] : m_states)
      if (state & kRowSelected) rows.Add(row, row);
    return rows;
  }
  void Select(const RowRanges& rows) override {
    calls.push_back("select " + std::to_string(rows.Count()));
    const int focused = NextItem(-1, kRowFocused);
    const unsigned oldState = GetItemState(focused);
    for (int row = 0; row < m_count; ++row) {
      const unsigned kept = GetItemState(row) & kRowFocused;
      m_states[row] = kept | (rows.Contains(row) ? unsigned{kRowSelected} : 0U);
    }
    std::erase_if(m_states, [](const auto& entry) { return entry.second == 0; });
    Painted();
    if (GetItemState(focused) != oldState)
      m_owner.OnRowStateChanged(focused, oldState, GetItemState(focused));
  }

  int TopIndex() const override { return m_top; }
  int CountPerPage() const override { return std::max(pageRows, 1); }
  void EnsureVisible(int row) override {
    calls.push_back("visible " + std::to_string(row));
    if (row < 0 || row >= m_count) return;
    SetTop(std::clamp(m_top, row - CountPerPage() + 1, row));
    Painted();
  }
  void ShowHit(int row, ListColumn column) override {
    calls.push_back("hit " + std::to_string(row) + " " + std::to_string(column.Index()));
  }
  // The user scrolls.
  void ScrollTo(int top) { SetTop(top); }

  void SetRedraw(bool on) override {
    calls.push_back(on ? "redraw on" : "redraw off");
    redraw = on;
    if (on) ++fullPaints;
  }
  void Repaint() override { ++repaints; }
  void ShowEndMark(bool on) override { endMark = on; }

  ListHeader& Header() override { return *this; }
  // Columns have 100 pixels each, in the order of the header, hidden ones too.
  std::optional<ListColumn> ColumnAtScreen(int screenXPx) const override {
    const ListOrder order = GetColumnOrder();
    const auto place = static_cast<std::size_t>(screenXPx / 100);
    if (screenXPx < 0 || place >= order.size()) return std::nullopt;
    return ListColumn(order[place]);
  }
  int FitWidth(ListColumn column) const override {
    if (!Exists(column)) return 0;
    int width = StringWidth(columns[At(column)].header);
    for (int row = m_top; row < std::min(m_top + pageRows, m_count); ++row)
      width = std::max(width, StringWidth(m_owner.RowListText(row, column)));
    return std::max(width, 16);
  }

  void AskForMenu() override { m_owner.OnHeaderContextMenu(std::nullopt, 0, 0); }

 private:
  void SetTop(int top) {
    top = std::clamp(top, 0, std::max(m_count - CountPerPage(), 0));
    if (std::exchange(m_top, top) != top) m_owner.OnRowListScrolled();
  }
  void Painted() {
    if (redraw) ++rowPaints;
  }

  // Sets the state and reports it if it has changed.
  void Put(int row, unsigned newState) {
    const unsigned oldState = GetItemState(row);
    if (newState == oldState) return;
    m_states[row] = newState;
    if (!newState) m_states.erase(row);
    Painted();
    m_owner.OnRowStateChanged(row, oldState, newState);
  }
  void SetOne(int row, unsigned state, unsigned mask) {
    const unsigned newState = (GetItemState(row) & ~mask) | (state & mask);
    const int focused = NextItem(-1, kRowFocused);
    if ((newState & kRowFocused) && focused != -1 && focused != row)
      Put(focused, GetItemState(focused) & ~static_cast<unsigned>(kRowFocused));
    Put(row, newState);
  }
  void SetAll(unsigned state, unsigned mask) {
    if (state & kRowFocused) mask &= ~static_cast<unsigned>(kRowFocused);
    const int focused = NextItem(-1, kRowFocused);
    const unsigned oldState = GetItemState(focused);
    for (int row = 0; row < m_count; ++row)
      if ((state & mask) || m_states.count(row))
        m_states[row] = (GetItemState(row) & ~mask) | (state & mask);
    std::erase_if(m_states, [](const auto& entry) { return entry.second == 0; });
    Painted();
    if (focused != -1 && !(GetItemState(focused) & kRowFocused))
      m_owner.OnRowStateChanged(focused, oldState, GetItemState(focused));
  }

  RowListOwner& m_owner;
  int m_count = 0;
  int m_top = 0;
  std::map<int, unsigned> m_states;  // rows that have one
};
