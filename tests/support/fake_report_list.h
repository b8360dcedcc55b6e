// A report list without a screen: headings, a width, a page of rows, a selection and the focus. A
// person clicks on what stands in the page, and types only while the list has the focus.
#pragma once

#include <algorithm>
#include <set>
#include <string>
#include <utility>
#include <vector>

#include "controls/report/report_list.h"

class FakeReportList final : public ReportList {
 public:
  static constexpr int kBarPx = 14;

  explicit FakeReportList(ReportListOwner& owner) : m_owner(owner) {}

  void InsertColumn(const std::string& heading, ReportAlign align) override {
    m_headings.push_back(heading);
    m_aligns.push_back(align);
    LayOut();
  }
  int ColumnWidth(int column) const override {
    return HasColumn(column) ? m_widths[static_cast<std::size_t>(column)] : 0;
  }
  int WidthFor(const std::string& text) const override {
    return 7 * static_cast<int>(text.size()) + 16;
  }
  void ShowSort(int column, bool descending) override {
    if (!HasColumn(column)) return;
    m_sort = m_headings[static_cast<std::size_t>(column)] + (descending ? " down" : " up");
  }
  void SetItemCount(int rows) override {
    m_rows = rows;
    m_selected.clear();
    m_focused = -1;
    m_top = 0;
    m_owner.OnReportSelection();
  }
  int ItemCount() const override { return m_rows; }
  void Repaint() override { ++m_painted; }
  std::vector<int> SelectedRows() const override { return {m_selected.begin(), m_selected.end()}; }
  bool HasSelection() const override { return !m_selected.empty(); }

  // What a person sees and does.
  void SetFocus() { m_focus = true; }
  void SetPage(int rows) { m_page = rows; }
  void SetWidth(int roomPx) {
    m_roomPx = roomPx;
    LayOut();
  }
  void DragHeading(int column, int widthPx) {
    m_dragged = true;
    m_widths[static_cast<std::size_t>(column)] = widthPx;
  }
  const std::string& Sort() const { return m_sort; }  // "Category down"
  const std::vector<std::string>& Headings() const { return m_headings; }
  int Painted() { return std::exchange(m_painted, 0); }
  int Top() const { return m_top; }
  void ScrollTo(int row) { m_top = std::clamp(row, 0, std::max(0, m_rows - m_page)); }
  bool IsSeen(int row) const { return row >= m_top && row < m_top + m_page && row < m_rows; }
  std::string Text(int row) const {
    std::string text;
    for (int column = 0; column < static_cast<int>(m_headings.size()); ++column)
      text += (column ? "|" : "") + m_owner.ReportText(row, column);
    return text;
  }
  bool LooksRight(int column) const {
    return m_aligns.at(static_cast<std::size_t>(column)) == ReportAlign::Right;
  }
  bool LooksWhole(int row, int column) const {
    const std::string& heading = m_headings.at(static_cast<std::size_t>(column));
    return std::max(WidthFor(heading), WidthFor(m_owner.ReportText(row, column))) <=
           ColumnWidth(column);
  }
  bool LooksSelected(int row, int column) const {
    return IsSeen(row) && HasColumn(column) && m_selected.contains(row);
  }
  // In any of its cells.
  void Click(int row, bool control = false, int column = 0) {
    m_focus = true;
    if (!IsSeen(row) || !HasColumn(column)) return;
    m_focused = row;
    std::set<int> selected = control ? m_selected : std::set<int>();
    if (!control || !selected.erase(row)) selected.insert(row);
    Select(selected);
  }
  void DoubleClick(int row, int column = 0) {
    Click(row, false, column);
    if (IsSeen(row) && HasColumn(column)) m_owner.OnReportDoubleClick();
  }
  void ClickHeading(int column) { m_owner.OnReportHeading(column); }
  void PressHeadingKey(int column) {
    if (m_focus && HasColumn(column)) m_owner.OnReportHeading(column);
  }
  void PressSelectAll() {
    std::set<int> all;
    for (int row = 0; row < m_rows; ++row) all.insert(all.end(), row);
    if (m_focus) Select(all);
  }
  // Selects the next row whose first column begins so, in any case.
  void Type(char letter) {
    const auto begins = [&](int row) {
      const std::string text = m_owner.ReportText(row, 0);
      return !text.empty() && (text[0] | 0x20) == (letter | 0x20);
    };
    for (int step = 1; m_focus && step <= m_rows; ++step) {
      const int row = (m_focused + step) % m_rows;
      if (!begins(row)) continue;
      m_top = std::clamp(m_top, std::max(0, row - m_page + 1), row);
      return Click(row);
    }
  }

 private:
  bool HasColumn(int column) const {
    return column >= 0 && column < static_cast<int>(m_headings.size());
  }
  void LayOut() {
    m_widths.resize(m_headings.size());
    if (m_dragged) return;
    const std::vector<int> widths = m_owner.ReportWidths(m_roomPx);
    std::copy_n(widths.begin(), std::min(widths.size(), m_widths.size()), m_widths.begin());
  }
  void Select(const std::set<int>& selected) {
    if (std::exchange(m_selected, selected) != selected) m_owner.OnReportSelection();
  }

  ReportListOwner& m_owner;
  std::vector<std::string> m_headings;
  std::vector<ReportAlign> m_aligns;
  std::vector<int> m_widths;
  std::set<int> m_selected;
  std::string m_sort;
  int m_rows = 0, m_focused = -1, m_top = 0, m_page = 10, m_roomPx = 400, m_painted = 0;
  bool m_focus = false, m_dragged = false;
};
