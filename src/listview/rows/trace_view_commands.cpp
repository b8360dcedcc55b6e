// What the list view's commands work on.
#include "listview/rows/trace_view.h"
#include "listview/rows/trace_view_iterator.h"

std::unique_ptr<CTraceIterator> CTraceView::MakeIterator() {
  const int row = m_list->NextItem(-1, kRowFocused);
  return m_rows.Has(row) ? std::make_unique<CTraceViewIterator>(*this, m_rows, row) : nullptr;
}
