// Find and Find Next in the list view.
#include "listview/rows/row_walk.h"
#include "listview/rows/trace_view.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class ShownRows final : public CountedRows {
 public:
  explicit ShownRows(const CTraceView& view) : m_view(view) {}
  int CountedSize() const override { return m_view.Rows().Size(); }
  const TraceEvent_i* CountedAt(int row) const override { return m_view.Rows().EventAt(row); }
  bool AreRowsWhole() const override { return !m_view.FilterProgress(); }
  int CurrentRow() const override { return m_view.List().NextItem(-1, kRowFocused); }

 private:
  const CTraceView& m_view;
};

}  // namespace

void CTraceView::Find(bool asked) {
  if (!FinishFilter()) return;
  std::optional<CWaitCursor> wait;
  if (asked) wait.emplace(GetHost());
  FindInRows();
}

void CTraceView::FindInRows() {
  RowWalk walk(m_rows, m_list->NextItem(-1, kRowFocused), FindSettings.backward != 0);
  if (const RegexProgram* const program = RegexLastProgram())
    walk.Scan(m_document.m_traces, [&](const ScanOrder& order) {
      return TextScan::Begin(m_document.Lend(), *program, order);
    });
  const FindResult result = RunSearch(GetHost(), &m_document, walk);
  if (result != FindResult::Cancelled) CountHits(m_document, std::make_unique<ShownRows>(*this));
  switch (result) {
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
