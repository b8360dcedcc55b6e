#include "listview/rows/trace_view_iterator.h"

#include <algorithm>

CTraceViewIterator::CTraceViewIterator(CTraceView& view, const RowStore& rows, int row)
    : m_view(view), m_rows(rows), m_row(row) {
  if (m_rows.Has(row)) current = m_rows.EventAt(row);
}

void CTraceViewIterator::Next() {
  MoveTo(m_row + 1);
}

void CTraceViewIterator::Prev() {
  MoveTo(m_row - 1);
}

bool CTraceViewIterator::HasNext() const {
  return m_row + 1 < m_rows.Size();
}

bool CTraceViewIterator::HasPrev() const {
  return m_row != 0;
}

// Rows may have been trimmed since the last move, so the index is limited to the existing rows.
void CTraceViewIterator::MoveTo(int row) {
  if (m_rows.Size() == 0) {
    current = nullptr;
    return;
  }
  RowList& list = m_view.List();
  list.SetItemState(m_row, 0, kRowSelected);
  m_row = std::clamp(row, 0, m_rows.Size() - 1);
  current = m_rows.EventAt(m_row);
  list.SetItemState(m_row, kRowSelected, kRowSelected);
  list.EnsureVisible(m_row);
  m_view.Follow(current);
}
