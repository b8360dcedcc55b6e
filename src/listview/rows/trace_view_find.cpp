// Find and Find Next in the list view.
#include "listview/rows/row_walk.h"
#include "listview/rows/trace_view.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class ShownRows final : public CountedRows {
 public:
  ShownRows(const CTraceView& view, std::function<void(int)> goTo)
      : m_view(view), m_goTo(std::move(goTo)) {}
  int CountedSize() const override { return m_view.Rows().Size(); }
  const TraceEvent_i* CountedAt(int row) const override { return m_view.Rows().EventAt(row); }
  bool AreRowsWhole() const override { return !m_view.FilterProgress(); }
  int CurrentRow() const override { return m_view.List().NextItem(-1, kRowFocused); }
  void GoTo(int row) override { m_goTo(row); }

 private:
  const CTraceView& m_view;
  const std::function<void(int)> m_goTo;
};

}  // namespace

void CTraceView::Find(bool asked) {
  if (!FinishFilter()) return;
  std::optional<CWaitCursor> wait;
  if (asked) wait.emplace(GetHost());
  FindInRows();
}

void CTraceView::FindInRows() {
  const auto show = [this](int row) {
    m_list->SetItemState(row, kRowFocused, kRowFocused);
    m_list->EnsureVisible(row);
    ShowHits(true);
    m_list->ShowHit(row, Column::Trace);
    Follow(EventOfRow(row));
  };
  RowWalk walk(m_rows, m_list->NextItem(-1, kRowFocused), FindSettings.backward != 0);
  if (const RegexProgram* const program = RegexLastProgram())
    walk.Scan(m_document.m_traces, [&](const ScanOrder& order) {
      return TextScan::Begin(m_document.Lend(), *program, order);
    });
  const FindResult result = RunSearch(GetHost(), &m_document, walk);
  if (result != FindResult::Cancelled)
    CountHits(m_document, std::make_unique<ShownRows>(*this, show));
  switch (result) {
    case FindResult::Hit:
      // Row -1, where a search stops that began with the first row, means all rows.
      m_list->SetItemState(walk.StopRow(), 0, kRowFocused);
      show(walk.Row());
      break;
    case FindResult::NotFound:
      ReportNotFound(GetHost());
      break;
    case FindResult::Cancelled:
      break;
  }
}
