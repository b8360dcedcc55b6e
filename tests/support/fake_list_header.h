// The header of a list without a window: columns with widths and an order. The list knows the rows,
// so it says how wide a column must be for them.
#pragma once

#include <string>
#include <vector>

#include "controls/list/row_list.h"

class FakeListHeader : public ListHeader {
 public:
  int charWidthPx = 7;        // the average character
  int headerCharWidthPx = 7;  // every character of a measured text

  void InsertColumn(const ListColumnInfo& column, int widthPx) override {
    m_order.push_back(static_cast<int>(columns.size()));
    columns.push_back(column);
    m_widths.push_back(widthPx);
  }
  int ColumnWidth(ListColumn column) const override {
    return Exists(column) ? m_widths[At(column)] : 0;
  }
  void SetColumnWidth(ListColumn column, int widthPx) override {
    if (Exists(column)) m_widths[At(column)] = widthPx;
  }
  ListOrder GetColumnOrder() const override { return m_order; }
  void SetColumnOrder(const ListOrder& order) override {
    given = order;
    m_order = PermutationOf(order, static_cast<int>(columns.size()));
  }
  int AverageCharWidth() const override { return charWidthPx; }
  int StringWidth(const std::string& text) const override {
    return static_cast<int>(text.size()) * headerCharWidthPx;
  }

  std::vector<ListColumnInfo> columns;  // as inserted
  ListOrder given;                      // the last order as given, with repeats

 protected:
  ~FakeListHeader() = default;
  static std::size_t At(ListColumn column) { return static_cast<std::size_t>(column.Index()); }
  bool Exists(ListColumn column) const {
    return column.Index() >= 0 && column.Index() < static_cast<int>(columns.size());
  }

 private:
  std::vector<int> m_widths;
  ListOrder m_order;
};
