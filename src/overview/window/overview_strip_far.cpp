#include "overview/window/overview_strip.h"
#include "overview/window/overview_texts.h"

// The times that are to be in slices; nothing: all but those far away.
std::optional<TimeLimits> OverviewStrip::Wanted() const {
  if (m_zoom || !m_showsFar) return m_zoom;
  return TimeLimits();
}

bool OverviewStrip::IsAnyFar() const {
  const OverviewEndNotes notes = FarNotes();
  return !notes.first.empty() || !notes.last.empty();
}

void OverviewStrip::ShowFar(bool on) {
  if (on == m_showsFar || !Shown() || (on && !IsAnyFar())) return;
  m_showsFar = on;
  m_zoom = std::nullopt;
  CountAnew();
}

// At the ends of a span that is not all: what lies beyond them.
OverviewEndNotes OverviewStrip::FarNotes() const {
  if (m_zoom || !Shown() || m_slices->IsOfPart()) return {};
  if (m_slices->Zoom()) return {"all times", {}};
  OverviewEndNotes notes;
  const TimeSlices& slices = m_slices->Slices();
  if (slices.Before() > 0)
    notes.first = CountText(slices.Before(), "trace", "traces") + " long before";
  if (slices.Behind() > 0)
    notes.last = CountText(slices.Behind(), "trace", "traces") + " long behind";
  return notes;
}

void OverviewStrip::OpenMenu(int screenXPx, int screenYPx) {
  if (!Shown()) return;
  const bool showsFar = m_showsFar;
  const std::weak_ptr<char> mark = m_mark;
  m_host.OpenMenu(
      {{"Show Times &Far Away", showsFar || IsAnyFar(), showsFar}, {"Zoom &Out", IsZoomed()}},
      screenXPx, screenYPx, [this, mark, showsFar](std::size_t place) {
        if (mark.expired()) return;
        if (place == 0)
          ShowFar(!showsFar);
        else
          ZoomOut();
      });
}
