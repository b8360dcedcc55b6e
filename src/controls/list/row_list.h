// The interface to the row list: a virtual list in report mode. It holds a number of rows, the
// focus, the selection and the columns, and asks its owner for every cell that it paints.
//
// Shape    Rows are 0..count-1; -1 means all rows where a call says so. A column is identified by
//          its index, wherever it is on the screen. Pixels are device-independent.
// Owner    The view owns the list; the list borrows its RowListOwner, which outlives it.
// Errors   A row or column that does not exist is ignored.
// Threads  Interface thread.
//
// The Qt class (controls/list/ui) and a fake (tests/support) pass the same contract test.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>

#include "controls/list/list_columns.h"
#include "controls/list/row_list_owner.h"
#include "controls/list/row_ranges.h"
#include "docview/view.h"

// The list's header.
class ListHeader {
 public:
  // After the existing columns.
  virtual void InsertColumn(const ListColumnInfo& column, int widthPx) = 0;
  virtual int ColumnWidth(ListColumn column) const = 0;  // 0: hidden
  // The user cannot drag a hidden column open. This call may set a width below 16 pixels.
  virtual void SetColumnWidth(ListColumn column, int widthPx) = 0;
  virtual ListOrder GetColumnOrder() const = 0;             // always a permutation
  virtual void SetColumnOrder(const ListOrder& order) = 0;  // by PermutationOf
  // The unit of column widths in characters: at least the width of a digit.
  virtual int AverageCharWidth() const = 0;
  virtual int StringWidth(const std::string& text) const = 0;
  virtual void AskForMenu() = 0;  // as the user does by the keyboard
  // The width that the column needs for its name and its visible cells; at least 16.
  virtual int FitWidth(ListColumn column) const = 0;

 protected:
  ~ListHeader() = default;
};

class RowList : public ViewControl {
 public:
  // Does not scroll (unless the top row would no longer exist) and reports nothing. Rows after the
  // new count lose their state.
  virtual void SetItemCount(int rows) = 0;
  virtual int ItemCount() const = 0;
  // Removes rows; later rows move up with their state. A removal at the front keeps the visible
  // rows in place. Reports nothing, even if the focused row is removed.
  virtual void DeleteRows(int first, int count) = 0;

  // Row -1: all rows; only the row that loses the focus is reported. All rows cannot have the
  // focus.
  virtual void SetItemState(int row, unsigned state, unsigned mask) = 0;
  virtual unsigned GetItemState(int row) const = 0;
  // The first row after `after` (-1: from the start) with any of the states; -1 for none.
  virtual int NextItem(int after, unsigned states) const = 0;
  virtual int SelectedCount() const = 0;
  // All selected rows at once, at the cost of their ranges. Select: these and no others; only the
  // focused row is reported.
  virtual RowRanges Selection() const = 0;
  virtual void Select(const RowRanges& rows) = 0;

  // If the last row is visible the list is "at its end". It stays there with every change of its
  // size, shown or hidden: TopIndex() + CountPerPage() continues to reach ItemCount().
  virtual int TopIndex() const = 0;
  virtual int CountPerPage() const = 0;     // fully visible rows; 1 if there is not even one
  virtual void EnsureVisible(int row) = 0;  // fully, scrolling as little as needed
  // Scrolls horizontally, as little as needed, to the first hit in the cell; to the cell's end if
  // the hit is cut off there.
  virtual void ShowHit(int row, ListColumn column) = 0;
  // While redrawing is off nothing is painted; switching it on paints all.
  virtual void SetRedraw(bool on) = 0;
  // The look of rows, or the text for an empty list, has changed.
  virtual void Repaint() = 0;
  // For lists with live rows: shows whether the list is at its end; elsewhere a click leads there.
  virtual void ShowEndMark(bool on) = 0;

  virtual ListHeader& Header() = 0;
  // The column of the cells at this place of the screen; none right of the last one.
  virtual std::optional<ListColumn> ColumnAtScreen(int screenXPx) const = 0;
};

using RowListMaker = std::function<std::unique_ptr<RowList>(RowListOwner&)>;
