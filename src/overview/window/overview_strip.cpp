#include "overview/window/overview_strip.h"

#include <algorithm>
#include <utility>

#include "overview/window/overview_texts.h"
#include "settings/globals.h"

namespace {

constexpr std::chrono::milliseconds kStep(4), kShowEvery(200);

}  // namespace

// ---- what it follows

void OverviewStrip::SetPane(TracePane* pane) {
  if (pane == m_pane) return;
  const bool isSame = pane && m_pane && &pane->Document() == &m_pane->Document();
  if (m_pane) m_pane->Unwatch(*this);
  m_pane = pane;
  if (m_pane) m_pane->Watch(*this);
  if (!isSame) {
    m_slices.reset();
    m_coming.reset();
    m_times = nullptr;
    m_zoom = m_page = std::nullopt;
    m_showsFar = false;
    m_cursor = m_anchor = std::nullopt;
  }
  m_timer.reset();
  if (!m_pane) return;
  OnShownTraces();
}

void OverviewStrip::OnShownTraces() {
  m_isStale = m_isPageStale = true;
  Wake();
}

void OverviewStrip::OnScrolled() {
  m_isPageStale = true;
  Wake();
}

void OverviewStrip::OnRemoval(const CTraceHint& removed) {
  if (m_slices) m_slices->OnRemoval(removed);
  if (m_coming) m_coming->OnRemoval(removed);
}

void OverviewStrip::Wake() {
  if (!m_timer) m_timer.emplace(m_host, kTickMs, [this] { OnTick(); });
}

void OverviewStrip::OnTick() {
  bool changed = Renew();
  changed = StepSlices() || changed;
  changed = HasNewHits() || changed;
  if (std::exchange(m_isPageStale, false)) {
    const std::optional<TimeLimits> before = m_page;
    ReadPage();
    changed = changed || m_page != before;
  }
  m_isStale = m_isStale || changed;
  const bool isAtWork = m_coming || (m_slices && !m_slices->IsWhole() && !m_slices->HasFailed()) ||
                        (m_pane && m_pane->Hits() && m_pane->Hits()->IsAtWork());
  if (m_isStale && (Clock::now() >= m_nextShow || !isAtWork)) {
    // What a monitor receives is shown a few times a second.
    if (Clock::now() < m_nextShow) return;
    m_nextShow = Clock::now() + kShowEvery;
    m_isStale = false;
    Show();
  }
  if (!isAtWork && !m_isStale) m_timer.reset();
}

// True: other traces are counted from now on.
bool OverviewStrip::Renew() {
  const bool hasTraces = m_pane && !m_pane->Document().m_loading;
  if (!hasTraces) {
    const bool had = m_slices || m_coming;
    m_slices.reset();
    m_coming.reset();
    return had;
  }
  PaneSlices* const latest = m_coming ? m_coming.get() : m_slices.get();
  if (latest && latest->IsOf(m_pane->Document(), m_pane->m_filter)) return false;
  m_times = nullptr;
  // A document that was cleared has other times.
  if (latest && !latest->IsOfTraces(m_pane->Document())) {
    m_zoom = std::nullopt;
    m_showsFar = false;
  }
  m_coming = std::make_unique<PaneSlices>(m_pane->Document(), m_pane->m_filter, Wanted());
  if (!m_slices || !m_slices->IsOfTraces(m_pane->Document())) m_slices = std::move(m_coming);
  return true;
}

bool OverviewStrip::StepSlices() {
  bool changed = m_slices && m_slices->Step(kStep);
  if (m_coming && m_coming->Step(kStep) && (m_coming->IsWhole() || m_coming->HasFailed())) {
    m_slices = std::move(m_coming);
    changed = true;
  }
  if (changed && !m_coming && !m_zoom && m_slices->IsWhole()) {
    m_times = m_slices->Times();
    if (m_slices->Slices().Size() > 0)
      m_whole = {m_slices->Slices().From(), m_slices->Slices().To()};
  }
  return changed;
}

bool OverviewStrip::HasNewHits() {
  const HitCount* const hits = m_pane ? m_pane->Hits() : nullptr;
  const std::uint64_t version = hits ? hits->Version() : 0;
  return std::exchange(m_hits, version) != version;
}

void OverviewStrip::ReadPage() {
  m_page = std::nullopt;
  if (!m_pane) return;
  TraceTimes times;
  m_pane->VisitPage([&](const TraceEvent_i& event) {
    const std::int64_t time = times.Of(event.GetDate(), event.GetTime());
    if (time == TraceTimes::kNone) return;
    if (!m_page) m_page = TimeLimits{time, time + 1};
    m_page->from = std::min(m_page->from, time);
    m_page->to = std::max(m_page->to, time + 1);
  });
}

void OverviewStrip::Show() {
  if (m_face) m_face->Update();
}

// ---- what is shown

void OverviewStrip::SetSize(int widthPx, int leastBarPx, int mostBarPx) {
  m_widthPx = std::max(widthPx, 1);
  m_leastBarPx = std::max(leastBarPx, 1);
  m_mostBarPx = std::max(mostBarPx, m_leastBarPx);
}

const TimeSlices* OverviewStrip::Shown() const {
  return m_slices && m_slices->Slices().Size() > 0 ? &m_slices->Slices() : nullptr;
}

// A few slices do not become wide blocks: then the right end is empty.
TimeLimits OverviewStrip::WholeSpan() const {
  const TimeSlices* const slices = Shown();
  if (!slices || m_slices->IsOfPart()) return m_whole;
  const std::int64_t least = m_widthPx / m_mostBarPx * slices->Width();
  return {slices->From(),
          std::max(slices->To(), slices->From() + std::max<std::int64_t>(least, 1))};
}

OverviewScale OverviewStrip::Scale() const {
  const TimeLimits span = m_zoom ? *m_zoom : WholeSpan();
  return {span.from, span.to, m_widthPx};
}

std::vector<OverviewBar> OverviewStrip::Bars() const {
  const TimeSlices* const slices = Shown();
  return slices ? BarsOf(*slices, Scale(), m_leastBarPx) : std::vector<OverviewBar>();
}

std::vector<OverviewLabel> OverviewStrip::Labels(
    const std::function<int(const std::string&)>& widthPx) const {
  return Shown() ? LabelsOf(Scale(), g_useUtc, widthPx, FarNotes()) : std::vector<OverviewLabel>();
}

std::vector<int> OverviewStrip::MarkTicks() const {
  return TicksOf([&](const auto& visit) {
    TraceTimes times;
    for (const auto& [number, record] : m_pane->Document().Notes().Notes().Records()) {
      const RawTrace trace(record);
      visit(times.Of(trace.Date(), trace.Time()));
    }
  });
}

std::vector<int> OverviewStrip::HitTicks() const {
  return TicksOf([&](const auto& visit) {
    TraceTimes times;
    m_pane->VisitHits(
        [&](const TraceEvent_i& event) { visit(times.Of(event.GetDate(), event.GetTime())); });
  });
}

// `visitAll` gives all times.
template <class VisitAll>
std::vector<int> OverviewStrip::TicksOf(const VisitAll& visitAll) const {
  if (!m_pane || !Shown()) return {};
  const OverviewScale scale = Scale();
  std::vector<bool> ticked(static_cast<std::size_t>(scale.widthPx) + 1);
  visitAll([&](std::int64_t time) {
    if (time >= scale.from && time < scale.to)
      ticked[static_cast<std::size_t>(std::clamp(scale.PxOf(time), 0, scale.widthPx))] = true;
  });
  std::vector<int> ticks;
  for (std::size_t px = 0; px < ticked.size(); ++px)
    if (ticked[px]) ticks.push_back(static_cast<int>(px));
  return ticks;
}

TimeLimits OverviewStrip::BarOf(std::int64_t time) const {
  return BarTimeAt(*Shown(), Scale(), m_leastBarPx, time);
}

std::optional<TimeLimits> OverviewStrip::Cursor() const {
  if (!m_cursor || !Shown()) return std::nullopt;
  return BarOf(*m_cursor);
}

std::optional<TimeLimits> OverviewStrip::Chosen() const {
  if (!m_anchor || !m_cursor || !Shown()) return std::nullopt;
  const TimeLimits first = BarOf(std::min(*m_anchor, *m_cursor)),
                   last = BarOf(std::max(*m_anchor, *m_cursor));
  return TimeLimits{first.from, last.to};
}

std::string OverviewStrip::EmptyText() const {
  if (Shown()) return {};
  if (m_slices && m_slices->HasFailed()) return "There is not enough memory for the overview.";
  if (!m_slices || !IsWhole()) return {};
  return "No traces with a time";
}

std::string OverviewStrip::Description() const {
  const TimeSlices* const slices = Shown();
  if (!slices) return EmptyText();
  const auto textOf = [&](const TimeLimits& time) {
    return CountsText(slices->Between(time), time, g_useUtc);
  };
  std::string text = textOf({slices->From(), slices->To()});
  for (const std::string& note : {FarNotes().first, FarNotes().last})
    if (!note.empty()) text += ", " + note;
  if (const auto chosen = Chosen())
    text += ". Chosen: " + textOf(*chosen);
  else if (const auto cursor = Cursor())
    text += ". Here: " + textOf(*cursor);
  return text;
}

std::string OverviewStrip::TextAt(int px) const {
  const TimeSlices* const slices = Shown();
  if (!slices || px < 0 || px >= m_widthPx) return {};
  const TimeLimits bar = BarOf(Scale().TimeAt(px));
  return CountsText(slices->Between(bar), bar, g_useUtc);
}
