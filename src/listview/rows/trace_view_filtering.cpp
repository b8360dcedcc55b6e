// A filter text is applied to the rows in the background.
#include <algorithm>

#include "listview/rows/trace_view.h"
#include "panes/filter_wait.h"

namespace {

using Clock = TraceScan::Clock;
using std::chrono::milliseconds;

// How long a step holds the window, and how often growing rows are shown.
constexpr milliseconds kStep(10), kShowEvery(30);
// A few hits are shown when so long no page of them has come.
constexpr milliseconds kFewAfter(90);
constexpr int kThousandthsForScan = 950;  // the rest is for the search of the focused trace
constexpr unsigned kBothStates = kRowFocused | kRowSelected;

}  // namespace

bool CTraceView::SetWhere(WhereProgramPtr where) {
  if (m_firstUpdate || m_document.m_loading) return TracePane::SetWhere(std::move(where));
  BeginFiltering(std::move(where));
  return true;
}

// A text that is not applied yet ends at once.
void CTraceView::BeginFiltering(WhereProgramPtr where) {
  auto noted = MarksFor(where);  // below a box, so before anything changes
  const TraceEvent_i* const wanted = m_filtering ? m_filtering->wanted : nullptr;
  if (m_filtering && !m_filtering->scan) EndFiltering();
  if (!m_filtering)
    m_filtering =
        std::make_unique<RowFiltering>(m_document.m_traces, m_filter, m_filterChanged, m_utc);
  RowFiltering& now = *m_filtering;
  if (wanted) now.LookFor(m_rows, *wanted, this);
  now.scan.reset();
  now.shown = false;
  now.late.ClearToQueue();
  now.few.reset();
  m_filter.where = std::move(where);
  m_filter.noted = std::move(noted);
  m_utc = g_useUtc;
  if (m_filter.ShowsAll()) {
    now.fresh.ShowAll();
    CompleteRows();
  } else {
    now.fresh.ClearToQueue();
    now.scan = std::make_unique<TraceScan>(m_document, m_filter, m_scanSetup, m_step.GetLine());
    now.few.emplace(GetHost(), static_cast<unsigned>(kFewAfter.count()), [this] { ShowFew(); });
  }
  GoOnFiltering();
  ShowProgress();
}

// Threads that find no more for a while ask for no step.
void CTraceView::ShowFew() {
  if (!m_filtering) return;
  m_filtering->few.reset();
  GoOnFiltering();
}

void CTraceView::EndFiltering() {
  if (!m_filtering) return;
  // The text has come to stay.
  if (m_filtering->scan) m_filterChanged = true;
  m_filtering.reset();
}

void CTraceView::GoOnFiltering() {
  if (!m_filtering) return;
  StepFiltering(kStep, false);
  if (!m_filtering) return;
  const bool threads = m_filtering->scan && m_filtering->scan->GoOn();
  // Threads ask for a step when there are rows to take or to search.
  const bool searches = m_filtering->search && !m_filtering->search->IsAtEnd();
  if (!threads || searches) m_step.Ask();
}

void CTraceView::StepFiltering(milliseconds time, bool wait) {
  RowFiltering& now = *m_filtering;
  const Clock::time_point until = Clock::now() + std::min(time, GetHost().Pieces().next);
  if (now.scan) {
    RowStore& rows = now.shown ? m_rows : now.fresh;
    const TraceScan::State state = now.scan->Take(
        until, [&rows](TraceEvent_i* event) { rows.Append(event); }, wait);
    if (state == TraceScan::State::Failed) return CancelFilter();
    if (state == TraceScan::State::Whole) {
      CompleteRows();
    } else if (!now.shown) {
      const bool few = rows.Size() > 0 && Clock::now() - now.begun >= kFewAfter;
      if (few || rows.Size() >= m_list->CountPerPage()) ShowNewRows(false);
    }
  }
  LookForFocus(until);
  if (!now.scan && !now.search) m_filtering.reset();
  if (!m_filtering || Clock::now() - now.painted >= std::min(kShowEvery, GetHost().Pieces().next))
    ShowProgress();
}

void CTraceView::ShowProgress() {
  if (m_hitCount) m_hitCount->OnAdded();
  if (m_filtering) {
    RowFiltering& now = *m_filtering;
    now.painted = Clock::now();
    if (now.scan && now.shown && m_list->ItemCount() != m_rows.Size()) {
      m_list->SetItemCount(m_rows.Size());
      ReportCount();
      Tell(&PaneWatcher::OnShownTraces);
    }
  }
  if (m_onStatus) m_onStatus();
}

// ---- the rows

// The trace that has the focus keeps it; one that is still looked for is looked for in these rows.
void CTraceView::ShowNewRows(bool whole) {
  RowFiltering& now = *m_filtering;
  const TraceEvent_i* const current = CurrentEvent();
  if (!std::exchange(now.kept, true)) {
    if (current || !now.wanted)
      now.earlierStates = {m_list->Selection(), current ? m_currentRow : -1};
    now.earlierTop = m_list->TopIndex();
    now.earlierAtEnd = AtBottom();
    now.earlier.TakeOver(m_rows);
  }
  if (current) now.wanted = current;
  ShowRows(now.fresh, whole);
  now.shown = true;
  now.moved = false;
  now.top = m_list->TopIndex();
  if (now.wanted) now.LookFor(m_rows, *now.wanted, this);
}

// From here on the text is in force.
void CTraceView::CompleteRows() {
  RowFiltering& now = *m_filtering;
  RowStore& rows = now.shown ? m_rows : now.fresh;
  for (int row = 0; row < now.late.Size(); ++row) rows.Append(now.late.EventAt(row));
  m_filterChanged = true;
  if (now.shown) {
    now.NoteTop(m_list->TopIndex());
    m_list->SetItemCount(m_rows.Size());
    // Kept: a rebuild ends at the last row, unless a trace had the focus.
    if (!now.moved && CurrentEvent() == nullptr) m_list->EnsureVisible(m_rows.Size() - 1);
    now.top = m_list->TopIndex();
    ReportStatus();
  } else {
    ShowNewRows(true);
  }
  now.scan.reset();
  now.kept = false;
  now.earlier.Clear();
  now.late.Clear();
}

void CTraceView::RestoreRows() {
  RowFiltering& now = *m_filtering;
  const auto states = std::exchange(now.earlierStates, std::nullopt);
  if (states)
    now.EndSearch();
  else if (const TraceEvent_i* const current = CurrentEvent())
    now.wanted = current;
  ShowRows(now.earlier, false);
  const int last = m_rows.Size() - 1;
  const int bottom = std::min(now.earlierTop + m_list->CountPerPage() - 1, last);
  m_list->EnsureVisible(now.earlierAtEnd ? last : bottom);
  now.top = m_list->TopIndex();
  now.moved = now.kept = false;
  now.shown = true;
  if (states) {
    m_list->Select(states->selected);
    if (states->focus != -1) m_list->SetItemState(states->focus, kRowFocused, kRowFocused);
  } else if (now.wanted) {
    now.LookFor(m_rows, *now.wanted, this);
  }
}

void CTraceView::AddWhileFiltering(const CTraceHint& hint) {
  RowFiltering& now = *m_filtering;
  FilterPass pass(m_filter, m_document);
  for (TraceEvent_i* event : hint.m_events)
    if (pass.Matches(*event)) now.late.Append(event);
  if (!now.kept) return AddRows(hint, now.before);
  FilterPass before(now.before, m_document);
  for (TraceEvent_i* event : hint.m_events)
    if (before.Matches(*event)) now.earlier.Append(event);
}

// ---- the focus

void CTraceView::LookForFocus(Clock::time_point until) {
  RowFiltering& now = *m_filtering;
  while (now.search) {
    const bool all = now.search->DoPart();
    if (const int row = now.search->Row(); row != -1) return SelectFound(row);
    if (all && now.ShowsWhole()) return SelectFound(-1);
    if (all || Clock::now() >= until) return;
  }
}

// Old selections are removed in any case, also if no row is near.
void CTraceView::SelectFound(int row) {
  RowFiltering& now = *m_filtering;
  CView* const sender = now.sender;
  now.EndSearch();
  m_currentRow = -1;
  now.selecting = true;
  m_list->SetItemState(-1, 0, kBothStates);
  if (row != -1) ShowFound(row, sender);
  now.selecting = false;
}

void CTraceView::ShowFound(int row, CView* sender) {
  RowFiltering& now = *m_filtering;
  // It may be a row that was not counted yet.
  if (m_list->ItemCount() != m_rows.Size()) m_list->SetItemCount(m_rows.Size());
  now.NoteTop(m_list->TopIndex());
  if (now.moved)
    m_list->SetItemState(row, kBothStates, kBothStates);
  else
    SelectRow(sender, row);
  now.top = m_list->TopIndex();
}

void CTraceView::FollowWhileFiltering(CView* sender, const TraceEvent_i& target) {
  RowFiltering& now = *m_filtering;
  now.OnChosen();
  now.LookFor(m_rows, target, sender);
  now.moved = false;
  now.top = m_list->TopIndex();
  LookForFocus(Clock::now() + kStep);
  if (now.search)
    m_step.Ask();
  else if (!now.scan)
    m_filtering.reset();
}

// ---- for the line and for commands

std::optional<int> CTraceView::FilterProgress() const {
  if (!m_filtering) return std::nullopt;
  if (m_filtering->scan) return m_filtering->scan->Thousandths() * kThousandthsForScan / 1000;
  const int searched = m_filtering->search ? m_filtering->search->Progress().value_or(0) : 0;
  return kThousandthsForScan + searched * (1000 - kThousandthsForScan) / 1000;
}

void CTraceView::CancelFilter() {
  if (!m_filtering) return;
  RowFiltering& now = *m_filtering;
  // Rows that are complete stay, without a focus.
  if (!now.scan) {
    m_filtering.reset();
    return ShowProgress();
  }
  now.scan.reset();
  // A text that is taken back is applied anew if the zone is another one now. What the user cancels
  // may be just that: then its rows stay as they are.
  const bool isOther = m_filter.where != now.before.where;
  m_utc = now.utcBefore;
  m_filter.where = now.before.where;
  m_filter.noted = now.before.noted;
  m_filterChanged = now.changedBefore;
  if (now.kept) RestoreRows();
  ReportStatus();
  LookForFocus(Clock::now() + kStep);
  if (now.search)
    m_step.Ask();
  else
    m_filtering.reset();
  if (isOther) FollowZone();
  ShowProgress();
}

// A text with a time that says no zone shows other traces in another zone. A pass in two zones
// would show some of both.
void CTraceView::FollowZone() {
  if (m_utc == g_useUtc || m_document.m_loading) return;
  if (m_filter.where && HasTimeWithoutZone(m_filter.where->Expr()))
    BeginFiltering(m_filter.where);
  else
    m_utc = g_useUtc;
}

bool CTraceView::FinishFilter() {
  constexpr milliseconds kPart(1);
  return WaitForFilter(*this, [this] { StepFiltering(kPart, true); });
}
