// The header of the row list: fifteen sections, hidden where a column's width is 0.
//
// A drag is put to the owner step by step and refused steps do not move; what code sets is not.
//
// Threads  Interface thread.
#pragma once

#include <QHeaderView>
#include <QStandardItemModel>
#include <array>
#include <functional>
#include <optional>

#include "controls/list/row_list.h"

class RowHeader final : public QHeaderView, public ListHeader {
 public:
  static constexpr int kCellMarginPx = 6;     // left and right of a text
  static constexpr int kNarrowestFitPx = 16;  // what a fitted column is at least

  // `fitWidth(column)` is what the column needs to show what is on view.
  RowHeader(QWidget* parent, RowListOwner& owner, std::function<int(Column)> fitWidth);

  void InsertColumn(const ColumnInfo& column, int widthPx) override;
  int ColumnWidth(Column column) const override;
  void SetColumnWidth(Column column, int widthPx) override;
  ColumnOrder GetColumnOrder() const override;
  void SetColumnOrder(const ColumnOrder& order) override;
  int AverageCharWidth() const override;
  // With the margins of a cell, so that a column of this width does not cut the text.
  int StringWidth(const std::string& text) const override;
  int FitWidth(Column column) const override;

  // The shown columns from left to right.
  std::vector<Column> ShownColumns() const;
  ColumnAlign AlignOf(Column column) const { return m_columns[Index(column)].align; }
  QString HeaderText(Column column) const;
  // Left edge in the viewport.
  int ColumnLeft(Column column) const { return sectionViewportPosition(static_cast<int>(column)); }
  // Of the cells below. The last shown column, if its text begins at the left, has the free room
  // beside it too; its own width stays.
  int CellWidth(Column column) const;
  // The column whose cells lie at the place in the viewport.
  std::optional<Column> ColumnAt(int xPx) const;

 protected:
  // With the margins of the cells below.
  void paintSection(QPainter* painter, const QRect& rect, int section) const override;
  void initStyleOptionForIndex(QStyleOptionHeader* option, int section) const override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;

 private:
  static std::size_t Index(Column column) { return static_cast<std::size_t>(column); }
  bool Exists(Column column) const;
  // The last shown column, if it takes the free room.
  std::optional<Column> Stretched() const;
  void OnSectionResized(int section, int oldWidth, int newWidth);
  void FitColumn(Column column);
  // Resizes without asking the owner.
  void Resize(int section, int widthPx);

  RowListOwner& m_owner;
  const std::function<int(Column)> m_fitWidth;
  QStandardItemModel m_model;
  std::array<ColumnInfo, kColumnCount> m_columns = {};
  bool m_dragging = false;    // the left button is down
  bool m_setting = false;     // by code, not by the user
  int m_resizedSection = -1;  // by the drag under way
  bool m_moved = false;       // a section, by the drag under way
};
