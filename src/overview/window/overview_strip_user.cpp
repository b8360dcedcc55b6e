#include <algorithm>
#include <utility>

#include "overview/window/overview_strip.h"
#include "where/steps/cell_step.h"

namespace {

constexpr int kDragPx = 4;

}  // namespace

void OverviewStrip::Press(int px) {
  if (!Shown()) return;
  m_pressedPx = px;
  m_isDrag = false;
  m_anchor = std::nullopt;
  m_cursor = std::min(Scale().TimeAt(px), Scale().to - 1);
  Show();
}

void OverviewStrip::Drag(int px) {
  if (!m_pressedPx || !Shown()) return;
  m_isDrag = m_isDrag || std::abs(px - *m_pressedPx) >= kDragPx;
  if (!m_isDrag) return;
  m_anchor = Scale().TimeAt(*m_pressedPx);
  m_cursor = std::min(Scale().TimeAt(px), Scale().to - 1);
  Show();
}

void OverviewStrip::Release(int px) {
  if (!m_pressedPx || !Shown()) return;
  Drag(px);
  m_pressedPx = std::nullopt;
  if (!std::exchange(m_isDrag, false)) return GoTo(BarOf(*m_cursor));
  const std::optional<TimeLimits> chosen = Chosen();
  m_anchor = std::nullopt;
  if (chosen) FilterBy(*chosen);
}

void OverviewStrip::CancelDrag() {
  m_pressedPx = std::nullopt;
  m_anchor = std::nullopt;
  m_isDrag = false;
  Show();
}

void OverviewStrip::Wheel(int px, int notches) {
  if (Shown()) ZoomAround(Scale().TimeAt(px), notches);
}

// The time stays where it is.
void OverviewStrip::ZoomAround(std::int64_t time, int notches) {
  const std::int64_t least = std::max(m_widthPx / m_mostBarPx, 1);
  const TimeLimits whole = m_zoom ? m_whole : WholeSpan();
  if (!m_zoom) m_whole = whole;
  TimeLimits zoom = m_zoom.value_or(whole);
  for (; notches > 0 && zoom.to - zoom.from > least; --notches)
    zoom = {time - (time - zoom.from) / 2, time + (zoom.to - time) / 2};
  for (; notches < 0 && zoom.to - zoom.from < whole.to - whole.from; ++notches)
    zoom = {time - 2 * (time - zoom.from), time + 2 * (zoom.to - time)};
  if (zoom.to <= zoom.from) zoom.to = zoom.from + 1;
  const std::int64_t span = zoom.to - zoom.from;
  if (span >= whole.to - whole.from) return SetZoom(std::nullopt);
  zoom.from = std::clamp(zoom.from, whole.from, whole.to - span);
  SetZoom(TimeLimits{zoom.from, zoom.from + span});
}

void OverviewStrip::ZoomOut() {
  SetZoom(std::nullopt);
}

// The slices that are there are shown with the new scale until the narrower ones are counted.
void OverviewStrip::SetZoom(const std::optional<TimeLimits>& zoom) {
  if (zoom == m_zoom || !m_pane) return;
  m_zoom = zoom;
  CountAnew();
}

void OverviewStrip::CountAnew() {
  m_anchor = std::nullopt;
  m_coming = std::make_unique<PaneSlices>(m_pane->Document(), m_pane->m_filter, Wanted(), m_times);
  m_isStale = true;
  m_nextShow = {};
  Wake();
  Show();
}

bool OverviewStrip::OnKey(Key key, bool shift) {
  if (key == Key::Escape) {
    if (m_anchor || m_pressedPx)
      CancelDrag();
    else if (m_zoom)
      ZoomOut();
    else
      m_owner.LeaveOverview();
    return true;
  }
  if (!Shown()) return false;
  const OverviewScale scale = Scale();
  const std::int64_t here = m_cursor.value_or((scale.from + scale.to) / 2);
  switch (key) {
    case Key::Enter:
      if (const auto chosen = Chosen()) {
        m_anchor = std::nullopt;
        FilterBy(*chosen);
      } else if (m_cursor) {
        GoTo(BarOf(*m_cursor));
      }
      return true;
    case Key::ZoomIn:
      ZoomAround(here, 1);
      return true;
    case Key::ZoomOut:
      ZoomAround(here, -1);
      return true;
    case Key::Far:
      ShowFar(!m_showsFar);
      return true;
    default:
      Move(key, shift);
      return true;
  }
}

void OverviewStrip::Move(Key key, bool shift) {
  const OverviewScale scale = Scale();
  const std::int64_t last = scale.to - 1;
  const std::int64_t begin = m_page ? m_page->from : Shown()->From();
  const bool isNew = !m_cursor || *m_cursor < scale.from || *m_cursor > last;
  const std::int64_t before = std::clamp(isNew ? begin : *m_cursor, scale.from, last);
  const TimeLimits bar = BarOf(before);
  std::int64_t now = before;
  if (key == Key::Home) now = scale.from;
  if (key == Key::End) now = std::min(Shown()->To() - 1, last);
  if (key == Key::Left && !isNew) now = bar.from - 1;
  if (key == Key::Right && !isNew) now = bar.to;
  if (!shift)
    m_anchor = std::nullopt;
  else if (!m_anchor)
    m_anchor = before;
  m_cursor = BarOf(std::clamp(now, scale.from, last)).from;
  m_cursor = std::clamp(*m_cursor, scale.from, last);
  Show();
}

// To the first trace there; where there is none, to the next one, else to the one before.
void OverviewStrip::GoTo(const TimeLimits& bar) {
  const TimeSlices& slices = m_slices->Slices();
  const std::vector<OverviewBar> bars = BarsOf(slices, Scale(), m_leastBarPx);
  if (bars.empty()) return;
  auto found = std::find_if(bars.begin(), bars.end(),
                            [&](const OverviewBar& other) { return other.time.from >= bar.from; });
  if (found == bars.end()) --found;
  TraceEvent_i* const event = m_slices->FirstIn(found->time);
  m_cursor = std::max(found->time.from, Scale().from);
  Show();
  if (!event) return;
  CTraceHint hint(event);
  m_pane->OnUpdate(nullptr, kHintFollow, &hint);
}

void OverviewStrip::FilterBy(const TimeLimits& range) {
  Show();
  if (const auto text = OnlyBetween(MomentOfMs(range.from), MomentOfMs(range.to - 1)))
    m_owner.TakeOverviewStep(*text);
}
