// Focus and selection of a row list: who has them, what keys and clicks make of them, who is told.
//
// Shape    Rows count from 0; -1 for none. Inside, numbers are absolute: they count on from the
//          first row that ever stood in the list, so that a trim at the front is one subtraction.
// Threads  Interface thread.
#pragma once

#include <functional>

#include "controls/list/row_list.h"
#include "controls/list/row_ranges.h"

class RowStates {
 public:
  // Comes when the change is complete: the row that loses the focus before the one that gains it.
  // Ranges tell only what happens to the focused rows.
  using Tell = std::function<void(int row, unsigned oldState, unsigned newState)>;
  // Rows first..last look different now.
  using Repaint = std::function<void(int first, int last)>;

  RowStates(Tell tell, Repaint repaint);

  int Count() const { return m_count; }
  // Rows behind the new count lose their state; nothing is told.
  void SetCount(int count);
  // REQUIRES: the rows exist. Those behind move up with their state; nothing is told.
  void Delete(int first, int count);
  // How many rows were taken off the front so far.
  std::int64_t Base() const { return m_base; }

  unsigned StateOf(int row) const;
  bool Exists(int row) const { return row >= 0 && row < m_count; }
  int Focus() const { return Relative(m_focus); }
  int SelectedCount() const { return static_cast<int>(m_selected.Count()); }
  int Next(int after, unsigned states) const;

  // What code does.
  void Set(int row, unsigned state, unsigned mask);
  void SetAll(unsigned state, unsigned mask);

  // What the user does; the row exists.
  void Pick(int row);                 // selects it alone
  void Toggle(int row);               // turns its selection over
  void Extend(int row, bool adding);  // selects from the anchor to it, alone or beside the rest
  void MoveFocus(int row);            // leaves the selection alone
  void ClearSelection();

 private:
  using Row = RowRanges::Row;
  int Relative(Row row) const { return row < m_base ? -1 : static_cast<int>(row - m_base); }
  // Moves the focus and changes the selection, then tells of the old focus and of `row`.
  void Change(Row focus, int row, const std::function<void()>& select);
  void TellChange(int row, unsigned oldState);
  void SetAnchor(int row);

  const Tell m_tell;
  const Repaint m_repaint;
  int m_count = 0;
  Row m_base = 0;
  Row m_focus = -1;
  Row m_anchor = -1;  // from where Extend selects
  RowRanges m_selected;
  RowRanges m_besides;  // what was selected when the anchor was set
};
