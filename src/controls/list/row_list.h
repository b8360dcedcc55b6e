// The port to the row list: a virtual list in report mode. It holds a number of rows, the focus,
// the selection and the columns, and asks its owner for every cell that it paints.
//
// Shape    Rows are 0..count-1; -1 names all rows where a call says so. Columns are known by their
//          index, wherever they stand on the screen. Pixels are device-independent.
// Owner    The view owns the list; the list borrows its RowListOwner, which outlives it.
// Errors   A row or column that does not exist is ignored.
// Threads  Interface thread.
//
// A Qt face (controls/list/ui) and a fake (tests/support) pass one contract test.
#pragma once

#include <string>
#include <vector>

#include "controls/list/list_columns.h"
#include "docview/view.h"

enum RowState : unsigned { kRowFocused = 1, kRowSelected = 2 };

class RowListOwner {
 public:
  // At most kCellBytes - 1 bytes are shown.
  virtual std::string RowListText(int row, ListColumn column) = 0;
  virtual int RowListIcon(int row) = 0;  // -1: none
  virtual RowTint RowListTint(int row) = 0;
  // What a search has found in the cell's text.
  virtual std::vector<HitRange> RowListHits(int row, ListColumn column) = 0;
  // Shown while there are no rows: what is awaited, and below it in smaller letters why.
  virtual std::string RowListEmptyText() = 0;
  // A row's state changed. Comes before the call that changed it returns, for the row that loses
  // the focus before the one that gains it. Not for a change of the item count, nor for a deletion.
  virtual void OnRowStateChanged(int row, unsigned oldState, unsigned newState) = 0;
  virtual void OnRowClicked(int row) = 0;        // left button; -1 beside the rows
  virtual void OnRowDoubleClicked(int row) = 0;  // or Enter on the focused row
  // The user asks for the context menu; row is the one under the mouse (already selected) or the
  // focused one.
  virtual void OnRowListContextMenu(int screenXPx, int screenYPx) = 0;
  // The header. True refuses the width.
  virtual bool OnColumnResizing(ListColumn column, int widthPx) = 0;
  virtual void OnColumnResized(ListColumn column, int widthPx) = 0;  // end of the drag
  virtual void OnColumnsReordered() = 0;                             // end of a header drag

 protected:
  ~RowListOwner() = default;
};

// The list's header.
class ListHeader {
 public:
  // Behind those that there are.
  virtual void InsertColumn(const ListColumnInfo& column, int widthPx) = 0;
  virtual int ColumnWidth(ListColumn column) const = 0;  // 0: hidden
  // A hidden column cannot be dragged open; a width below 16 pixels holds when set by this call.
  virtual void SetColumnWidth(ListColumn column, int widthPx) = 0;
  virtual ListOrder GetColumnOrder() const = 0;             // always a permutation
  virtual void SetColumnOrder(const ListOrder& order) = 0;  // by PermutationOf
  // The width of which the columns' widths in characters are counted: at least a digit's.
  virtual int AverageCharWidth() const = 0;
  virtual int StringWidth(const std::string& text) const = 0;
  // What the column needs so that its name and what is on view of it show whole; at least 16.
  virtual int FitWidth(ListColumn column) const = 0;

 protected:
  ~ListHeader() = default;
};

class RowList : public ViewControl {
 public:
  // Neither scrolls (but for a top that would leave the rows) nor tells; rows behind the new count
  // lose their state.
  virtual void SetItemCount(int rows) = 0;
  virtual int ItemCount() const = 0;
  // Takes rows out; those behind move up with their state. At the front what is seen stays in
  // place. Tells nothing, also when the focused row goes.
  virtual void DeleteRows(int first, int count) = 0;

  // Row -1: all, told only to the row that loses the focus; the focus itself cannot go to all.
  virtual void SetItemState(int row, unsigned state, unsigned mask) = 0;
  virtual unsigned GetItemState(int row) const = 0;
  // The first row behind `after` (-1: from the start) with any of the states; -1 for none.
  virtual int NextItem(int after, unsigned states) const = 0;
  virtual int SelectedCount() const = 0;

  // A list whose last row is on view stands at its end, and stays there with every change of its
  // size, seen or hidden: TopIndex() + CountPerPage() goes on to reach ItemCount().
  virtual int TopIndex() const = 0;
  virtual int CountPerPage() const = 0;     // rows that show whole; 1 where less than one does
  virtual void EnsureVisible(int row) = 0;  // whole, scrolling as little as needed
  // Scrolls across, as little as needed, to the first hit that the owner tells of in the cell; to
  // the cell's end when it is cut off there.
  virtual void ShowHit(int row, ListColumn column) = 0;
  // While redrawing is off nothing is painted; switching it on paints all.
  virtual void SetRedraw(bool on) = 0;
  // The owner would answer other looks and other texts for an empty list from now on.
  virtual void Repaint() = 0;
  // For rows that go on coming: whether the list stands at its end can be seen, and elsewhere one
  // click leads there.
  virtual void ShowEndMark(bool on) = 0;

  virtual ListHeader& Header() = 0;
};
