// The header of the row list: a section for each column, hidden where a column's width is 0.
//
// The owner is asked about each step of a drag, and refused steps have no effect. It is not asked
// about widths that code sets.
//
// Threads  Interface thread.
#pragma once

#include <QHeaderView>
#include <QStandardItemModel>
#include <functional>
#include <optional>

#include "controls/list/row_list.h"

class RowHeader final : public QHeaderView, public ListHeader {
 public:
  static constexpr int kCellMarginPx = 6;     // left and right of a text
  static constexpr int kNarrowestFitPx = 16;  // the least width of a fitted column

  // `fitWidth(column)` is the width that the visible cells of the column need.
  RowHeader(QWidget* parent, RowListOwner& owner, std::function<int(ListColumn)> fitWidth);

  void InsertColumn(const ListColumnInfo& column, int widthPx) override;
  int ColumnWidth(ListColumn column) const override;
  void SetColumnWidth(ListColumn column, int widthPx) override;
  ListOrder GetColumnOrder() const override;
  void SetColumnOrder(const ListOrder& order) override;
  int AverageCharWidth() const override;
  // Includes the margins of a cell, so that a column of this width does not cut the text.
  int StringWidth(const std::string& text) const override;
  int FitWidth(ListColumn column) const override;
  void AskForMenu() override;

  // The shown columns from left to right.
  std::vector<ListColumn> ShownColumns() const;
  ColumnAlign AlignOf(ListColumn column) const { return InfoOf(column).align; }
  bool ShowsIcon(ListColumn column) const { return InfoOf(column).showsIcon; }
  QString HeaderText(ListColumn column) const;
  // Left edge in the viewport.
  int ColumnLeft(ListColumn column) const { return sectionViewportPosition(column.Index()); }
  // The width of the cells below. The last shown column, if it is left-aligned, also uses the free
  // space beside it; its own width does not change.
  int CellWidth(ListColumn column) const;
  // The column of the cells at this position of the viewport.
  std::optional<ListColumn> ColumnAt(int xPx) const;

 protected:
  // With the margins of the cells below.
  void paintSection(QPainter* painter, const QRect& rect, int section) const override;
  void initStyleOptionForIndex(QStyleOptionHeader* option, int section) const override;
  void mousePressEvent(QMouseEvent* event) override;
  void mouseReleaseEvent(QMouseEvent* event) override;
  void contextMenuEvent(QContextMenuEvent* event) override;

 private:
  // REQUIRES: Exists.
  const ListColumnInfo& InfoOf(ListColumn column) const {
    return m_columns[static_cast<std::size_t>(column.Index())];
  }
  bool Exists(ListColumn column) const { return column.Index() >= 0 && column.Index() < count(); }
  // The last shown column, if it uses the free space.
  std::optional<ListColumn> Stretched() const;
  void OnSectionResized(int section, int oldWidth, int newWidth);
  void FitColumn(ListColumn column);
  // Resizes without asking the owner.
  void Resize(int section, int widthPx);

  RowListOwner& m_owner;
  const std::function<int(ListColumn)> m_fitWidth;
  QStandardItemModel m_model;
  std::vector<ListColumnInfo> m_columns;
  bool m_dragging = false;    // the left button is down
  bool m_setting = false;     // by code, not by the user
  int m_resizedSection = -1;  // by the current drag
  bool m_moved = false;       // a section, by the current drag
};
