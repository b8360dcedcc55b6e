// Focus and selection of a row list: the rows that have them, the effect of keys and clicks, and
// the notification of changes.
//
// Shape    Rows count from 0; -1 for none. Internal numbers are absolute: they count from the first
//          row that was ever in the list, so that a trim at the front is one subtraction.
// Threads  Interface thread.
#pragma once

#include <functional>

#include "controls/list/row_list.h"
#include "controls/list/row_ranges.h"

class RowStates {
 public:
  // Called when the change is complete: for the row that loses the focus before the row that gains
  // it. For ranges it is called only for the focused rows.
  using Notify = std::function<void(int row, unsigned oldState, unsigned newState)>;
  // Rows first..last look different now.
  using Repaint = std::function<void(int first, int last)>;

  RowStates(Notify notify, Repaint repaint);

  int Count() const { return m_count; }
  // Rows after the new count lose their state; nothing is reported.
  void SetCount(int count);
  // REQUIRES: the rows exist. Later rows move up with their state; nothing is reported.
  void Delete(int first, int count);
  // How many rows were removed from the front so far.
  std::int64_t Base() const { return m_base; }

  unsigned StateOf(int row) const;
  bool Exists(int row) const { return row >= 0 && row < m_count; }
  int Focus() const { return Relative(m_focus); }
  int SelectedCount() const { return static_cast<int>(m_selected.Count()); }
  int Next(int after, unsigned states) const;

  // Changes by code.
  void Set(int row, unsigned state, unsigned mask);
  void SetAll(unsigned state, unsigned mask);
  // Those that exist, and no others.
  void Select(const RowRanges& rows);
  RowRanges Selection() const { return m_selected.MovedBy(-m_base); }

  // Changes by the user; the row must exist.
  void Pick(int row);                 // selects it alone
  void Toggle(int row);               // toggles its selection
  void Extend(int row, bool adding);  // selects from the anchor to it, alone or in addition
  void MoveFocus(int row);            // does not change the selection
  void ClearSelection();

 private:
  using Row = RowRanges::Row;
  int Relative(Row row) const { return row < m_base ? -1 : static_cast<int>(row - m_base); }
  // Moves the focus and changes the selection, then reports the old focus and `row`.
  void Change(Row focus, int row, const std::function<void()>& select);
  void NotifyChange(int row, unsigned oldState);
  void SetAnchor(int row);

  const Notify m_notify;
  const Repaint m_repaint;
  int m_count = 0;
  Row m_base = 0;
  Row m_focus = -1;
  Row m_anchor = -1;  // the start of Extend
  RowRanges m_selected;
  RowRanges m_besides;  // the selection when the anchor was set
};
