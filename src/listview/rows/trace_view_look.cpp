// The look of the rows of the list view, apart from their texts.
#include "base/text.h"
#include "listview/colours/active_colours.h"
#include "listview/rows/trace_view.h"
#include "panes/row_mark.h"
#include "settings/globals.h"
#include "tree/find/searched_text.h"

RowTint CTraceView::RowListTint(int row) {
  const TraceEvent_i* event = g_tintSeverity ? EventOfRow(row) : nullptr;
  const int icon = event ? SeverityIcon(*event) : -1;
  return icon == 1 ? RowTint::Warn : icon == 2 ? RowTint::Error : RowTint::None;
}

void CTraceView::OnRowListPaint(bool begins) {
  if (m_times && begins) m_times->BeginPage();
  if (m_times && !begins && m_times->IsLate()) m_paintLate.Ask();
  // While a file is read its names belong to the thread that reads it.
  const ColourProgramPtr active = m_document.m_loading ? nullptr : m_colours.Shown();
  if (!active) {
    m_colourer = nullptr;
    return;
  }
  if (!begins) {
    if (m_colourer && m_colourer->IsLate()) m_paintLate.Ask();
    return;
  }
  if (!m_colourer || &m_colourer->Program() != active.get())
    m_colourer = std::make_unique<RowColourer>(active, m_document);
  m_colourer->BeginPage(m_colourTime);
}

std::optional<RowColours> CTraceView::RowListColours(int row) {
  const TraceEvent_i* const event = m_colourer ? EventOfRow(row) : nullptr;
  if (!event) return std::nullopt;
  return m_colourer->Of(*event, m_rows.PlaceOf(row));
}

std::optional<RowMark> CTraceView::RowListMark(int row) {
  const TraceEvent_i* const event = EventOfRow(row);
  return event ? RowMarkOf(m_document, *event) : std::nullopt;
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
