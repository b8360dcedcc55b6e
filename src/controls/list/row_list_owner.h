// What a row list asks of its owner, and what it tells him.
//
// Threads  Interface thread.
#pragma once

#include <optional>
#include <string>
#include <vector>

#include "controls/list/list_columns.h"

enum RowState : unsigned { kRowFocused = 1, kRowSelected = 2 };

class RowListOwner {
 public:
  // At most kCellBytes - 1 bytes are shown.
  virtual std::string RowListText(int row, ListColumn column) = 0;
  virtual int RowListIcon(int row) = 0;  // -1: none
  virtual RowTint RowListTint(int row) = 0;
  // Instead of the tint and the list's own colours, while the row is not selected. Asked between
  // the two calls of OnRowListPaint only.
  virtual std::optional<RowColours> RowListColours(int) { return std::nullopt; }
  virtual void OnRowListPaint(bool /*begins*/) {}
  virtual std::optional<RowMark> RowListMark(int /*row*/) { return std::nullopt; }
  // The hits of a search in the cell's text.
  virtual std::vector<HitRange> RowListHits(int row, ListColumn column) = 0;
  // Shown while there are no rows: what the list waits for, and below in smaller letters the
  // reason.
  virtual std::string RowListEmptyText() = 0;
  // A row's state has changed. Called before the call that changed it returns, for the row that
  // loses the focus before the row that gains it. Not called for a change of the item count or a
  // deletion.
  virtual void OnRowStateChanged(int row, unsigned oldState, unsigned newState) = 0;
  virtual void OnRowClicked(int row) = 0;        // left button; -1 outside the rows
  virtual void OnRowDoubleClicked(int row) = 0;  // or Enter on the focused row
  // The key Delete. False: it is left to the window.
  virtual bool OnRowListDelete() { return false; }
  // The user asks for the context menu. The row is the one under the mouse (already selected) or
  // the focused one.
  virtual void OnRowListContextMenu(int screenXPx, int screenYPx) = 0;
  // The top row or the number of rows of a page has changed.
  virtual void OnRowListScrolled() {}
  // The context menu of the header at this column; none: right of them, or by the keyboard.
  virtual void OnHeaderContextMenu(std::optional<ListColumn> /*column*/, int /*x*/, int /*y*/) {}
  // The header. Return true to refuse the width.
  virtual bool OnColumnResizing(ListColumn column, int widthPx) = 0;
  virtual void OnColumnResized(ListColumn column, int widthPx) = 0;  // end of the drag
  virtual void OnColumnsReordered() = 0;                             // end of a header drag

 protected:
  ~RowListOwner() = default;
};
