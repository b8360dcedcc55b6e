#include "overview/window/pane_slices.h"

#include <algorithm>
#include <utility>

#include "overview/far_times.h"
#include "settings/globals.h"
#include "statistics/window/filtered_traces.h"
#include "statistics/window/same_filter.h"
#include "tree/filter/filter_pass.h"

PaneSlices::PaneSlices(CTraceDoc& document, const CTraceFilter& filter,
                       std::optional<TimeLimits> zoom, PieceTimesPtr known)
    : m_document(document),
      m_filter(filter),
      m_zoom(zoom),
      m_generation(document.m_traces.Generation()),
      m_utc(g_useUtc),
      m_slices(zoom.value_or(TimeLimits())),
      m_reader(LossNames(document.m_names)),
      m_names(document.m_names.size()),
      m_next(document.m_traces.Popped()) {
  std::shared_ptr<const LentTraces> lent = document.Lend();
  if (!lent) return;
  SliceCountSetup setup;
  setup.limits = zoom;
  setup.known = std::move(known);
  // A text that searches may take milliseconds for one trace: a stop is looked at often.
  if (filter.IsSlow()) setup.perLook = 16;
  m_file = std::make_unique<SliceCount>(
      std::make_shared<FilteredTraces>(std::move(lent), filter, document), m_reader.Losses(),
      std::move(setup));
}

PaneSlices::~PaneSlices() = default;

bool PaneSlices::IsOf(const CTraceDoc& document, const CTraceFilter& filter) const {
  return IsOfTraces(document) && ShowTheSame(filter, m_filter) &&
         (m_utc == g_useUtc || !filter.where || !HasTimeWithoutZone(filter.where->Expr()));
}

bool PaneSlices::Step(std::chrono::milliseconds time) {
  const Clock::time_point until = Clock::now() + time;
  return m_file ? StepFile(until) : StepLive(until);
}

const TimeSlices& PaneSlices::Slices() const {
  if (m_file) return m_file->Slices();
  return m_before ? *m_before : m_slices;
}

bool PaneSlices::IsWhole() const {
  if (m_file) return m_whole;
  return m_next == m_document.m_traces.Popped() + m_document.m_traces.size();
}

bool PaneSlices::StepFile(Clock::time_point until) {
  if (m_whole || m_failed) return false;
  const int before = m_file->Thousandths();
  const SliceCount::State state = m_file->Take(until);
  m_whole = state == SliceCount::State::Whole;
  m_failed = state == SliceCount::State::Failed;
  return m_whole || m_failed || m_file->Thousandths() != before;
}

// ---- a monitor

// What is taken out again must be what was counted.
bool PaneSlices::LearnLosses() {
  if (m_document.m_names.size() == m_names) return false;
  m_names = m_document.m_names.size();
  LossNames losses(m_document.m_names);
  if (losses == m_reader.Losses()) return false;
  m_reader = SlicedReader(std::move(losses));
  return true;
}

void PaneSlices::BeginAnew(const TimeLimits& limits) {
  if (!m_before) m_before = std::make_unique<const TimeSlices>(std::move(m_slices));
  m_slices = TimeSlices(limits);
  m_shown = {};
  m_next = m_document.m_traces.Popped();
}

bool PaneSlices::StepLive(Clock::time_point until) {
  if (LearnLosses()) BeginAnew(m_slices.Limits());
  m_changed = std::exchange(m_changed, false) || !IsWhole();
  CountLive(until);
  // Each time the slices become much narrower, or the limits as wide as can be.
  while (IsWhole() && m_changed && !m_zoom) {
    const std::optional<TimeLimits> better = BetterLimits(m_slices);
    if (!better) {
      m_slices.RelaxLimits();
      break;
    }
    BeginAnew(*better);
    CountLive(until);
  }
  // Of all times: what was far may have gone.
  if (IsWhole() && m_changed && m_zoom && !IsOfPart() && CouldBeNarrower(m_slices)) {
    BeginAnew(*m_zoom);
    CountLive(until);
  }
  if (IsWhole()) m_before = nullptr;
  return std::exchange(m_changed, false);
}

void PaneSlices::CountLive(Clock::time_point until) {
  constexpr std::size_t kPerLook = 256;
  const TraceList_t& traces = m_document.m_traces;
  auto at = static_cast<std::size_t>(m_next - traces.Popped());
  if (at == traces.size()) return;
  std::optional<FilterPass> pass;
  if (!m_filter.ShowsAll()) pass.emplace(m_filter, m_document);
  if (pass && pass->NeedsBefore()) pass->BeginBehind(at > 0 ? traces[at - 1] : nullptr);
  do {
    const std::size_t end = std::min(at + kPerLook, traces.size());
    traces.ForEachIn(at, end, [&](const TraceEvent_i* event) {
      const bool isShown = !pass || pass->Matches(*event);
      if (pass) m_shown.Append(isShown);
      if (isShown) m_slices.Add(m_reader.Read(*event));
    });
    at = end;
  } while (at < traces.size() && Clock::now() < until);
  m_next = traces.Popped() + at;
}

void PaneSlices::OnRemoval(const CTraceHint& oldest) {
  const TraceList_t& traces = m_document.m_traces;
  if (m_file || traces.Generation() != m_generation) return;
  const bool isFiltered = !m_filter.ShowsAll();
  std::uint64_t number = traces.Popped();
  for (const TraceEvent_i* const event : oldest.m_events) {
    if (number++ >= m_next) continue;
    if (!isFiltered || m_shown.TakeFirst()) m_slices.Remove(m_reader.Read(*event));
    m_changed = true;
  }
  // Those that were not counted yet are passed over.
  m_next = std::max(m_next, number);
}

// ---- the traces of a place

TraceEvent_i* PaneSlices::FirstIn(const TimeLimits& limits) {
  std::optional<FilterPass> pass;
  if (!m_filter.ShowsAll()) pass.emplace(m_filter, m_document);
  FilterPass* const asked = pass ? &*pass : nullptr;
  const PieceTimesPtr times = Times();
  if (!times) return FirstIn(limits, 0, m_document.m_traces.size(), asked);
  for (const PieceTimes& piece : *times) {
    if (!piece.Overlaps(limits)) continue;
    if (TraceEvent_i* const first = FirstIn(limits, piece.from, piece.end, asked)) return first;
  }
  return nullptr;
}

// The time is looked at first: a text that searches may be slow.
TraceEvent_i* PaneSlices::FirstIn(const TimeLimits& limits, std::size_t from, std::size_t end,
                                  FilterPass* pass) {
  const TraceList_t& traces = m_document.m_traces;
  for (; from < end; ++from) {
    TraceEvent_i* const event = traces[from];
    const std::int64_t time = m_reader.Read(*event).time;
    if (time == TraceTimes::kNone || !limits.Has(time)) continue;
    if (!pass || pass->MatchesBehind(*event, from > 0 ? traces[from - 1] : nullptr)) return event;
  }
  return nullptr;
}
