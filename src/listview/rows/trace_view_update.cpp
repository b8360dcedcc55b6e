// Updates the list view after hints of its document: the rows, the selection.
#include "documents/trace_pass.h"
#include "listview/rows/nearest_row.h"
#include "listview/rows/trace_view.h"
#include "settings/globals.h"
#include "tree/filter/filter_pass.h"

namespace {

constexpr unsigned kFocusAndSelection = kRowFocused | kRowSelected;

// The rows of all traces that pass a filter.
class FilteredRows final : public TracePass {
 public:
  FilteredRows(const CTraceDoc& document, CTraceFilter& filter, RowStore& rows)
      : TracePass(document, filter.IsSlow() ? kTracesPerSearch : kTracesPerPart),
        m_pass(filter, document),
        m_rows(rows) {}

 private:
  void Take(std::size_t from, std::size_t end) override {
    Traces().ForEachIn(from, end, [this](TraceEvent_i* event) {
      if (m_pass.Matches(*event)) m_rows.Append(event);
    });
  }

  FilterPass m_pass;
  RowStore& m_rows;
};

}  // namespace

// Before its first update the view has no columns and no rows; that update fills it.
void CTraceView::OnUpdate(CView* sender, unsigned hint, CObject* object) {
  if (!m_firstUpdate) TracePane::OnUpdate(sender, hint, object);
}

void CTraceView::OnOptions() {
  m_columns.ShowAndHide();
  FollowZone();
}

void CTraceView::OnReady() {
  const bool filtered = m_filtering != nullptr;
  EndFiltering();
  if (filtered) ShowProgress();
  if (RebuildRows()) return;
  // There are no earlier rows to keep, and an empty list would look as if no trace matched. The
  // filter dialog may be open meanwhile.
  m_filter.ShowAll();
  m_filterChanged = true;
  RebuildRows();
}

bool CTraceView::AtBottom() const {
  return m_list->TopIndex() + m_list->CountPerPage() >= m_list->ItemCount();
}

// The existing rows stay until the new ones are complete. False when the user cancelled.
bool CTraceView::RebuildRows() {
  const CWaitCursor wait(GetHost());
  m_utc = g_useUtc;
  RowStore rows(m_document.m_traces);
  if (m_filter.ShowsAll())
    rows.ShowAll();
  else if (!FilterInto(rows))
    return false;
  // Kept: a rebuild ends at the last row.
  ShowRows(rows, true);
  // Last: the search for the row may show a box, and below it the new rows are painted.
  if (m_currentEvent) GoTo(this, m_currentEvent);
  return true;
}

void CTraceView::ShowRows(RowStore& rows, bool atEnd) {
  m_list->SetRedraw(false);
  // Null after a clear: then the traces of the rows are released and the store has no rows.
  m_currentEvent = CurrentEvent();
  m_list->SetItemCount(0);
  // The control was emptied without a notification and has no focus now.
  m_currentRow = -1;
  m_hits.reset();
  m_rows.TakeOver(rows);
  m_list->SetItemCount(m_rows.Size());
  if (m_hitCount) m_hitCount->OnAnew();
  if (atEnd) m_list->EnsureVisible(m_rows.Size() - 1);
  m_list->SetRedraw(true);
  ReportStatus();
}

bool CTraceView::FilterInto(RowStore& rows) {
  // After a clear the control has rows of released traces.
  if (m_rows.Size() == 0) m_list->SetItemCount(0);
  for (;;) {
    rows.Clear();
    FilteredRows pass(m_document, m_filter, rows);
    const PassResult result = RunTracePass(m_document, "Filtering...", pass);
    if (result != PassResult::Void) return result == PassResult::Whole;
  }
}

void CTraceView::AddTraces(const CTraceHint& hint) {
  if (m_filtering && m_filtering->scan)
    AddWhileFiltering(hint);
  else
    AddRows(hint, m_filter);
}

void CTraceView::AddRows(const CTraceHint& hint, CTraceFilter& filter) {
  // A rule may look at the newest trace.
  if (m_colourer && m_colourer->Program().UsesEnd()) m_list->Repaint();
  const bool atBottom = AtBottom();
  const int before = m_rows.Size();
  FilterPass pass(filter, m_document);
  for (TraceEvent_i* event : hint.m_events)
    if (pass.Matches(*event)) m_rows.Append(event);
  if (m_rows.Size() == before) return;
  m_list->SetItemCount(m_rows.Size());
  if (m_hitCount) m_hitCount->OnAdded();
  if (atBottom) m_list->EnsureVisible(m_rows.Size() - 1);
  ReportCount();
}

void CTraceView::RemoveTraces(const CTraceHint& hint) {
  if (m_filtering) m_filtering->BeforeRemoval(hint, m_list->TopIndex());
  if (m_times) m_times->Forget(hint);
  m_list->SetRedraw(false);
  // Adjacent rows are removed from the control in one call.
  int first = 0, count = 0;
  const auto deleteRows = [&] {
    if (count > 0) m_list->DeleteRows(first, count);
    if (count > 0 && m_hitCount) m_hitCount->OnRemoved(first, count);
  };
  // A trim has the document's oldest traces. Only for other hints the store must search.
  const TraceList_t& held = m_document.m_traces;
  std::size_t position = 0;
  bool oldest = true;
  for (const TraceEvent_i* event : hint.m_events) {
    oldest = oldest && position < held.size() && held[position] == event;
    ++position;
    if (m_colourer) m_colourer->Forget(event);
    if (m_filtering) m_filtering->Remove(event, oldest);
    const int row = m_rows.RemoveRow(event, oldest);
    if (row == -1) continue;
    if (row != first) {
      deleteRows();
      first = row;
      count = 0;
    }
    ++count;
  }
  deleteRows();
  // A deletion is not reported, and the rows after it have new numbers.
  m_currentRow = m_list->NextItem(-1, kRowFocused);
  m_list->SetRedraw(true);
  if (m_filtering) m_filtering->AfterRemoval(m_rows, m_list->TopIndex());
  ReportCount();
}

void CTraceView::FollowTrace(CView* sender, const TraceEvent_i& target) {
  if (m_filtering) return FollowWhileFiltering(sender, target);
  NearestRow search(m_rows, target);
  if (!RunLongWork(GetHost(), &m_document, {"Tessera", "Looking for the trace..."}, search)) return;
  const int row = search.Row();
  m_currentRow = -1;
  // Old selections are removed in any case, also if no row is near.
  m_list->SetItemState(-1, 0, kFocusAndSelection);
  if (row != -1) SelectRow(sender, row);
}

void CTraceView::SelectRow(CView* sender, int row) {
  m_list->SetItemState(row, kFocusAndSelection, kFocusAndSelection);
  if (sender == this)
    PostMessage(WM_TRACE_SHOWROW, static_cast<std::uintptr_t>(row));
  else
    m_list->EnsureVisible(row);
}
