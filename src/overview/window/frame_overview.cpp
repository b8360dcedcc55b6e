#include "overview/window/frame_overview.h"

#include <utility>

#include "settings/registry.h"

namespace {

constexpr const char* kShown = "Shown";

std::string Key() {
  return std::string(kRegTraceView) + "\\Overview";
}

}  // namespace

bool IsOverviewShown() {
  return NtRegGet(HKEY_CURRENT_USER, Key(), kShown, 0U) == 1;
}

void StoreOverviewShown(bool shown) {
  if (IsOverviewShown() != shown) NtRegPut(HKEY_CURRENT_USER, Key(), kShown, shown ? 1U : 0U);
}

FrameOverview::FrameOverview(Host& host, MakeFace makeFace, std::function<TracePane*()> shown,
                             std::function<void(const std::string&)> take)
    : m_host(host),
      m_makeFace(std::move(makeFace)),
      m_shown(std::move(shown)),
      m_take(std::move(take)) {}

FrameOverview::~FrameOverview() = default;

void FrameOverview::OnCreate(ChildFrameFace& window) {
  m_window = &window;
  if (IsOverviewShown()) Show();
}

void FrameOverview::OnPane() {
  if (m_strip) m_strip->SetPane(m_shown());
}

void FrameOverview::Show() {
  if (m_strip || !m_window) return;
  OverviewOwner& owner = *this;
  m_strip = std::make_unique<OverviewStrip>(m_host, owner);
  m_face = m_makeFace(*m_strip);
  m_strip->SetFace(m_face.get());
  m_window->ShowStrip(m_face.get());
  OnPane();
}

void FrameOverview::Toggle() {
  if (HasFocus()) return PutAway();
  Show();
  StoreOverviewShown(true);
  SetFocus();
}

void FrameOverview::SetFocus() {
  if (m_face) m_face->SetFocus();
}

void FrameOverview::PutAway() {
  StoreOverviewShown(false);
  m_window->ShowStrip(nullptr);
  m_face = nullptr;
  m_strip = nullptr;
  LeaveOverview();
}

void FrameOverview::LeaveOverview() {
  TracePane* const pane = m_shown();
  if (pane && pane->Control()) pane->Control()->SetFocus();
}
