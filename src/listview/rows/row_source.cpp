#include "listview/rows/row_source.h"

const TraceEvent_i* RowSource::Next() {
  const int all = m_rows.Size();
  if (m_row < all) m_row = m_selectedOnly ? m_list.NextItem(m_row, kRowSelected) : m_row + 1;
  if (m_rows.Has(m_row)) return m_rows.EventAt(m_row);
  m_row = all;
  return nullptr;
}

std::optional<int> RowSource::Progress() const {
  return Thousandths(static_cast<unsigned>(m_row + 1), static_cast<unsigned>(m_rows.Size()) + 1);
}
