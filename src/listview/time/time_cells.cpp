#include "listview/time/time_cells.h"

#include <algorithm>
#include <chrono>

#include "settings/globals.h"

namespace {

// So many are learned while a cell is made, and then in parts between which the user has his turn.
constexpr std::uint64_t kLearnedAtOnce = 4096;
constexpr std::chrono::milliseconds kStep{4};

}  // namespace

TimeCells::TimeCells(const CTraceDoc& document, std::function<void()> repaint)
    : m_document(document),
      m_repaint(std::move(repaint)),
      m_search(document.m_traces),
      m_step(document.GetHost(), [this] { GoOnLearning(); }) {}

// ---- the reference

void TimeCells::ToggleReference(const TraceEvent_i& trace) {
  if (IsReference(&trace))
    m_reference.reset();
  else
    m_reference = Reference{&trace, m_document.m_traces.Generation(), TracePoint(trace)};
}

bool TimeCells::IsGone() const {
  return m_reference &&
         (!m_reference->trace || m_reference->generation != m_document.m_traces.Generation());
}

bool TimeCells::IsReference(const TraceEvent_i* trace) const {
  return m_reference && trace && m_reference->trace == trace && !IsGone();
}

void TimeCells::Forget(const CTraceHint& removed) {
  if (m_reference &&
      std::ranges::find(removed.m_events, m_reference->trace) != removed.m_events.end())
    m_reference->trace = nullptr;
}

std::string TimeCells::SinceText(const TraceEvent_i& trace) const {
  if (!m_reference) return {};
  if (IsGone()) return kReferenceGone;
  if (m_reference->trace == &trace) return kReference;
  return TimeSpanText(m_reference->point, TracePoint(trace));
}

// ---- cells

void TimeCells::BeginPage() {
  m_search.BeginPage();
  m_late = false;
}

std::string TimeCells::Text(Column column, const TraceEvent_i& trace, const TraceEvent_i* above,
                            std::optional<std::size_t> place) {
  switch (column) {
    case Column::Delta:
      return DeltaText(trace, above);
    case Column::Since:
      return SinceText(trace);
    case Column::WallTime:
      return WallText(trace, place);
    default:
      return {};
  }
}

std::string TimeCells::WallText(const TraceEvent_i& trace, std::optional<std::size_t> place) {
  m_moments.UseUtc(g_useUtc);
  const bool whole = Learn();
  const TraceList_t& traces = m_document.m_traces;
  if (whole && !place) {
    place = m_search.Find(trace);
    if (!place) m_late = true;
    if (place == traces.size()) place.reset();
  }
  std::optional<std::uint64_t> number;
  if (whole && place) number = traces.Popped() + *place;
  std::string text;
  if (!m_moments.AppendKnown(text, number, trace)) text = trace.GetTimeString(!g_useUtc);
  return text;
}

std::uint64_t TimeCells::Known() const {
  return m_document.m_traces.Popped() + m_document.m_traces.size();
}

// Few new ones at once, others in the background. False: not all of them yet.
bool TimeCells::Learn() {
  const TraceList_t& traces = m_document.m_traces;
  if (m_generation != traces.Generation()) {
    m_generation = traces.Generation();
    m_moments.ForgetIds();
    m_learned = 0;
  }
  m_learned = std::max(m_learned, traces.Popped());
  const std::uint64_t all = Known();
  if (m_learned == all) return true;
  if (all - m_learned > kLearnedAtOnce) {
    m_step.Ask();
    return false;
  }
  traces.ForEach(static_cast<std::size_t>(m_learned - traces.Popped()),
                 [this](const TraceEvent_i* trace) { m_moments.Learn(m_learned++, *trace); });
  return true;
}

void TimeCells::GoOnLearning() {
  const TraceList_t& traces = m_document.m_traces;
  if (m_document.m_loading || m_generation != traces.Generation()) return;
  m_learned = std::max(m_learned, traces.Popped());
  const auto until = std::chrono::steady_clock::now() + kStep;
  while (m_learned < Known() && std::chrono::steady_clock::now() < until) {
    const auto from = static_cast<std::size_t>(m_learned - traces.Popped());
    const std::size_t end = std::min(traces.size(), from + 512);
    traces.ForEachIn(from, end,
                     [this](const TraceEvent_i* trace) { m_moments.Learn(m_learned++, *trace); });
  }
  if (m_learned < Known())
    m_step.Ask();
  else
    m_repaint();
}
