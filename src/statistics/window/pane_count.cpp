#include "statistics/window/pane_count.h"

#include <algorithm>

#include "settings/globals.h"
#include "statistics/window/filtered_traces.h"
#include "statistics/window/same_filter.h"
#include "tree/filter/filter_pass.h"

PaneCount::PaneCount(CTraceDoc& document, const CTraceFilter& filter, StatField field)
    : m_document(document),
      m_filter(filter),
      m_field(field),
      m_generation(document.m_traces.Generation()),
      m_utc(g_useUtc),
      m_live(field),
      m_first(document.m_traces.Popped()),
      m_next(m_first) {
  std::shared_ptr<const LentTraces> lent = document.Lend();
  if (!lent) return;
  // A text that searches may take milliseconds for one trace: a stop is looked at often.
  TraceCountSetup setup;
  if (filter.IsSlow()) setup.perLook = 16;
  m_file = std::make_unique<TraceCount>(
      std::make_shared<FilteredTraces>(std::move(lent), filter, document), field,
      std::function<void()>(), setup);
}

PaneCount::~PaneCount() = default;

bool PaneCount::IsOf(const CTraceDoc& document, const CTraceFilter& filter, StatField field) const {
  return &document == &m_document && field == m_field &&
         document.m_traces.Generation() == m_generation && ShowTheSame(filter, m_filter) &&
         (m_utc == g_useUtc || !filter.where || !HasTimeWithoutZone(filter.where->Expr()));
}

bool PaneCount::Step(std::chrono::milliseconds time) {
  const Clock::time_point until = Clock::now() + time;
  return m_file ? StepFile(until) : StepLive(until);
}

bool PaneCount::StepFile(Clock::time_point until) {
  if (m_whole || m_failed) return false;
  const int before = m_file->Thousandths();
  const TraceCount::State state = m_file->Take(until);
  m_whole = state == TraceCount::State::Whole;
  m_failed = state == TraceCount::State::Failed;
  return m_whole || m_failed || m_file->Thousandths() != before;
}

// The oldest of those that are counted, and perhaps some that never were.
bool PaneCount::TakeOutRemoved() {
  const std::uint64_t popped = m_document.m_traces.Popped();
  const std::uint64_t gone = std::min(popped, m_next) - m_first;
  m_live.Remove(static_cast<std::size_t>(gone));
  m_first = popped;
  m_next = std::max(m_next, popped);
  return gone > 0;
}

bool PaneCount::StepLive(Clock::time_point until) {
  constexpr std::size_t kPerLook = 256;
  const bool removed = TakeOutRemoved();
  const TraceList_t& traces = m_document.m_traces;
  auto at = static_cast<std::size_t>(m_next - m_first);
  if (at == traces.size()) return removed;
  FilterPass pass(m_filter, m_document);
  if (pass.NeedsBefore()) pass.BeginBehind(at > 0 ? traces[at - 1] : nullptr);
  const bool all = m_filter.ShowsAll();
  do {
    const std::size_t end = std::min(at + kPerLook, traces.size());
    traces.ForEachIn(at, end, [&](const TraceEvent_i* event) {
      m_live.Add(*event, all || pass.Matches(*event));
    });
    at = end;
  } while (at < traces.size() && Clock::now() < until);
  m_next = m_first + at;
  return true;
}

bool PaneCount::IsWhole() const {
  if (m_file) return m_whole;
  return m_next == m_document.m_traces.Popped() + m_document.m_traces.size();
}

int PaneCount::Thousandths() const {
  if (m_file) return m_file->Thousandths();
  const std::size_t all = m_document.m_traces.size();
  return all == 0 ? 1000 : static_cast<int>((m_next - m_first) * 1000 / all);
}

const StatTable& PaneCount::Table() {
  return m_file ? m_file->Table() : m_live.Table();
}
