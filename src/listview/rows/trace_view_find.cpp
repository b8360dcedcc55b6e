// Find and Find Next in the list view.
#include "listview/rows/trace_view.h"
#include "tree/find/find_search.h"
#include "tree/find/find_settings.h"
#include "tree/find/searched_text.h"

namespace {

// The texts of the rows, from the row after (before) the focused one, around to that row. Kept: the
// focused row is not tested, unless the search wraps at its first step. Each search ends after one
// pass.
class RowWalk final : public FindWalk {
 public:
  RowWalk(const RowStore& rows, int focusedRow, bool backward)
      : m_rows(rows), m_step(backward ? -1 : 1), m_left(rows.Size()) {
    const int last = rows.Size() - 1;
    int start = focusedRow == -1 ? -1 : focusedRow + m_step;
    if (!rows.Has(start)) {
      start = backward ? last : 0;
    } else {
      --m_left;
    }
    m_stop = start - m_step;
    m_row = m_stop;
  }

  std::optional<std::string_view> NextText() override {
    if (m_left-- <= 0) return std::nullopt;
    m_row += m_step;
    if (!m_rows.Has(m_row)) m_row = m_step > 0 ? 0 : m_rows.Size() - 1;
    return SearchedText(*m_rows.EventAt(m_row), m_text);
  }

  int Row() const { return m_row; }
  // Next to the start; outside the rows when the search wrapped at its first step.
  int StopRow() const { return m_stop; }

 private:
  const RowStore& m_rows;
  const int m_step;
  int m_left;  // rows to test
  int m_row = 0, m_stop = 0;
  std::string m_text;
};

}  // namespace

void CTraceView::Find(bool asked) {
  std::optional<CWaitCursor> wait;
  if (asked) wait.emplace(GetHost());
  FindInRows();
}

void CTraceView::FindInRows() {
  RowWalk walk(m_rows, m_list->NextItem(-1, kRowFocused), FindSettings.backward != 0);
  switch (RunSearch(GetHost(), &m_document, walk)) {
    case FindResult::Hit:
      // Row -1, where a search stops that began with the first row, means all rows.
      m_list->SetItemState(walk.StopRow(), 0, kRowFocused);
      m_list->SetItemState(walk.Row(), kRowFocused, kRowFocused);
      m_list->EnsureVisible(walk.Row());
      ShowHits(true);
      m_list->ShowHit(walk.Row(), Column::Trace);
      Follow(EventOfRow(walk.Row()));
      break;
    case FindResult::NotFound:
      ReportNotFound(GetHost());
      break;
    case FindResult::Cancelled:
      break;
  }
}
