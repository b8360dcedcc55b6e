// The look of the rows of the list view, apart from their texts.
#include "base/text.h"
#include "listview/rows/trace_view.h"
#include "settings/globals.h"
#include "tree/find/searched_text.h"

RowTint CTraceView::RowListTint(int row) {
  const TraceEvent_i* event = g_tintSeverity ? EventOfRow(row) : nullptr;
  const int icon = event ? SeverityIcon(*event) : -1;
  return icon == 1 ? RowTint::Warn : icon == 2 ? RowTint::Error : RowTint::None;
}

std::vector<HitRange> CTraceView::RowListHits(int row, ListColumn column) {
  const TraceEvent_i* event = EventOfRow(row);
  if (!m_hits || column != Column::Trace || !event) return {};
  std::string kept;
  return m_hits->In(SearchedText(*event, kept), FindHits::kStepsToPaint, kCellBytes - 1);
}

std::string CTraceView::RowListEmptyText() {
  // Nothing is known before the first update.
  if (m_firstUpdate || !GetDocument() || m_document.m_loading) return {};
  if (m_filtering && m_filtering->scan) return "Filtering...";
  const std::size_t held = m_document.m_traces.size();
  if (held == 0) return m_document.WhyEmpty();
  return "The filter hides " +
         (held == 1 ? "the only trace" : "all " + GroupDigits(held) + " traces") +
         "\nView > Filter... shows " + (held == 1 ? "it" : "them") + " again";
}
