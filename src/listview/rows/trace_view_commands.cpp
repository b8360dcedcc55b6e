// What the list view's commands work on.
#include "listview/rows/trace_view.h"
#include "listview/rows/trace_view_iterator.h"
#include "panes/trace_numbers.h"

std::unique_ptr<CTraceIterator> CTraceView::MakeIterator() {
  const int row = m_list->NextItem(-1, kRowFocused);
  return m_rows.Has(row) ? std::make_unique<CTraceViewIterator>(*this, m_rows, row) : nullptr;
}

// A search moves the focus and leaves the selection. So of a single row that is selected the focus
// tells more.
std::vector<std::uint64_t> CTraceView::SelectedNumbers(std::size_t most) const {
  const bool moved =
      m_rows.Has(m_currentRow) && !(m_list->GetItemState(m_currentRow) & kRowSelected);
  if (moved && m_list->SelectedCount() < 2) return NumberedPane::SelectedNumbers(most);
  std::vector<std::uint64_t> numbers;
  TraceNumbers search(m_document.m_traces);
  for (int row = m_list->NextItem(-1, kRowSelected); row != -1 && numbers.size() <= most;
       row = m_list->NextItem(row, kRowSelected)) {
    const TraceEvent_i* const event = EventOfRow(row);
    if (!event) continue;
    if (const std::optional<std::size_t> place = m_rows.PlaceOf(row))
      numbers.push_back(m_document.m_traces.Popped() + *place);
    else if (const std::optional<std::uint64_t> number = search.Of(*event))
      numbers.push_back(*number);
  }
  return numbers.empty() ? NumberedPane::SelectedNumbers(most) : numbers;
}

// While all traces are shown the row needs no search.
void CTraceView::ShowNumber(std::uint64_t number) {
  const std::optional<int> row = m_filtering ? std::nullopt : m_rows.RowOf(number);
  if (!row) return NumberedPane::ShowNumber(number);
  m_list->SetItemState(-1, 0, kRowFocused | kRowSelected);
  SelectRow(nullptr, *row);
  Follow(EventOfRow(*row));
}
