// A filter text is applied to the tree in the background.
#include <algorithm>
#include <utility>

#include "panes/filter_wait.h"
#include "settings/globals.h"
#include "tree/proc/proc_view.h"

namespace {

using Clock = TreePass::Clock;
using std::chrono::milliseconds;

// How long a step holds the window, and how often the progress is shown.
constexpr milliseconds kStep(10), kShowEvery(30);
constexpr int kThousandthsForPass = 950;  // the rest is for the search of the selected trace

// The marks may be others now.
bool DependsOnMarks(const WhereProgramPtr& where) {
  return where && where->UsesMarks();
}

// Another zone of the times may be another set of traces.
bool DependsOnZone(const WhereProgramPtr& where) {
  return where && HasTimeWithoutZone(where->Expr());
}

}  // namespace

bool CProcView::SetWhere(WhereProgramPtr where) {
  const bool stands = m_built && m_document.m_traces.Generation() == m_generation;
  if (!stands || m_document.m_loading) return TracePane::SetWhere(std::move(where));
  BeginFiltering(std::move(where));
  return true;
}

// A pass in two zones would show some traces of both.
void CProcView::OnOptions() {
  if (m_utc == g_useUtc || !m_built || m_document.m_loading) return;
  const bool stands = m_document.m_traces.Generation() == m_generation;
  if (stands && DependsOnZone(m_filter.where))
    BeginFiltering(m_filter.where);
  else
    m_utc = g_useUtc;
}

// A text that is not applied yet ends at once.
void CProcView::BeginFiltering(WhereProgramPtr where) {
  auto noted = MarksFor(where);  // below a box, so before anything changes
  // The tree that is shown is that of this text, and none: of all traces. Unless it depends on the
  // zone: it may be another one now, or may have been when the last traces came.
  if (m_filtering && m_filtering->pass && where == m_filtering->before.where &&
      !DependsOnZone(where) && !DependsOnMarks(where))
    return CancelFilter();
  const TraceEvent_i* const wanted = m_filtering ? m_filtering->wanted : nullptr;
  if (m_filtering && !m_filtering->pass) m_filtering.reset();
  if (!m_filtering) m_filtering = std::make_unique<TreeFiltering>(m_filter, m_filterChanged, m_utc);
  TreeFiltering& now = *m_filtering;
  now.wanted = wanted;
  m_model->UseFilter(now.before);
  now.pass.reset();
  m_filter.where = std::move(where);
  m_filter.noted = std::move(noted);
  m_utc = g_useUtc;
  now.pass = std::make_unique<TreePass>(m_document, m_filter, m_scanSetup, m_step.GetLine());
  GoOnFiltering();
  if (m_onStatus) m_onStatus();
}

// `applied`: the text has come to stay, though its tree is not there.
void CProcView::EndFiltering(bool applied) {
  if (!m_filtering) return;
  if (m_filtering->pass) {
    if (!applied) {
      m_filter.where = m_filtering->before.where;
      m_filter.noted = m_filtering->before.noted;
    }
    m_filterChanged = applied || m_filtering->changedBefore;
    m_model->UseFilter(m_filter);
  }
  m_filtering.reset();
}

// Below a box the tree must stand: its work goes on first.
void CProcView::GoOnFiltering() {
  if (!m_filtering || m_works > 0) return;
  StepFiltering(kStep, false);
  // Threads ask for a step when they have found something.
  if (m_filtering && !(m_filtering->pass && m_filtering->pass->GoOn())) m_step.Ask();
}

// Takes this long, or a little.
void CProcView::StepFiltering(milliseconds time, bool wait) {
  TreeFiltering& now = *m_filtering;
  const Clock::time_point until = Clock::now() + std::min(time, GetHost().Pieces().next);
  bool more = true;
  if (now.pass) {
    const TreePass::State state = now.pass->Step(until, wait);
    if (state == TreePass::State::Failed) return CancelFilter();
    if (state == TreePass::State::Whole) ShowNewTree();
    more = !now.pass && Clock::now() < until;
  }
  if (more && now.old) {
    now.old.reset();
    more = Clock::now() < until;
  }
  if (more) {
    LookForSelection(until);
    if (!now.reach) m_filtering.reset();
  }
  if (m_filtering && Clock::now() < now.painted + std::min(kShowEvery, GetHost().Pieces().next))
    return;
  if (m_filtering) now.painted = Clock::now();
  if (m_onStatus) m_onStatus();
}

// From here on the text is in force.
void CProcView::ShowNewTree() {
  TreeFiltering& now = *m_filtering;
  const TraceEvent_i* const selected = CurrentEvent();
  const TraceEvent_i* const wanted = selected ? selected : now.wanted;
  now.old = ReplaceTree(now.pass->TakeModel());
  now.pass.reset();
  m_filterChanged = true;
  FollowInSteps(wanted);
  ReportStatus();
}

void CProcView::FollowInSteps(const TraceEvent_i* target) {
  TreeFiltering& now = *m_filtering;
  now.EndSearch();
  if (!target) return;
  now.wanted = target;
  now.reach.emplace(*this, *m_model, *target);
}

void CProcView::LookForSelection(Clock::time_point until) {
  TreeFiltering& now = *m_filtering;
  while (now.reach) {
    if (now.reach->DoPart()) {
      const CTraceEvent* const node = now.reach->Node();
      // First, because a selection ends the search.
      now.EndSearch();
      if (node && node->treeItem) Show(node->treeItem);
    }
    if (Clock::now() >= until) return;
  }
}

// Whoever has selected an item: it is not the one that is looked for.
void CProcView::OnTreeSelectionChanged() {
  ShowHits(false);
  if (m_filtering) m_filtering->EndSearch();
  Tell(&PaneWatcher::OnCurrentTrace);
}

// The selection moves at each trim, and nodes go.
void CProcView::BeforeRemoval(const CTraceHint& hint) {
  TreeFiltering& now = *m_filtering;
  if (now.pass) now.pass->Remove(hint);
  if (!now.pass || std::ranges::find(hint.m_events, now.wanted) != hint.m_events.end())
    now.EndSearch();
}

// ---- for the line and for commands

std::optional<int> CProcView::FilterProgress() const {
  if (!m_filtering) return std::nullopt;
  if (m_filtering->pass) return m_filtering->pass->Thousandths() * kThousandthsForPass / 1000;
  const int reached = m_filtering->reach ? m_filtering->reach->Progress().value_or(0) : 0;
  return kThousandthsForPass + reached * (1000 - kThousandthsForPass) / 1000;
}

void CProcView::CancelFilter() {
  if (!m_filtering) return;
  // What a text before has left to look for, in the tree that stays.
  const TraceEvent_i* const wanted = m_filtering->pass ? m_filtering->wanted : nullptr;
  // A text that is taken back is applied anew if the zone is another one now. What the user cancels
  // may be just that: then its tree stays as it is.
  const TreeFiltering& now = *m_filtering;
  const bool isOther = now.pass && m_filter.where != now.before.where;
  if (now.pass) m_utc = now.utcBefore;
  EndFiltering(false);
  if (wanted) {
    m_filtering = std::make_unique<TreeFiltering>(m_filter, m_filterChanged, m_utc);
    FollowInSteps(wanted);
    m_step.Ask();
  }
  if (isOther) OnOptions();
  ReportStatus();
  if (m_onStatus) m_onStatus();
}

bool CProcView::FinishFilter() {
  constexpr milliseconds kPart(1);
  return WaitForFilter(*this, [this] { StepFiltering(kPart, true); });
}
