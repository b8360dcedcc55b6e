// The overview of one window: put away until it is asked for, and then it costs nothing.
//
// Owner    Owned by the frame; owns strip and face while they are shown.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>

#include "docview/frame.h"
#include "overview/window/overview_strip.h"

// Do new windows show it?
bool IsOverviewShown();
void StoreOverviewShown(bool shown);

class FrameOverview final : private OverviewOwner {
 public:
  using MakeFace = std::function<std::unique_ptr<OverviewFace>(OverviewStrip&)>;
  // `shown` gives the pane that the frame shows, null before it has one; `take` adds a step to the
  // filter text.
  FrameOverview(Host& host, MakeFace makeFace, std::function<TracePane*()> shown,
                std::function<void(const std::string&)> take);
  ~FrameOverview();

  // The window exists: shows the strip if the last one was shown, without the focus.
  void OnCreate(ChildFrameFace& window);
  // Another pane is shown.
  void OnPane();

  bool IsShown() const { return m_strip != nullptr; }
  bool HasFocus() const { return m_face && m_face->HasFocus(); }
  // Shows the strip and gives it the focus; with the focus in it, puts it away.
  void Toggle();
  void SetFocus();
  const OverviewStrip* Strip() const { return m_strip.get(); }

 private:
  void TakeOverviewStep(const std::string& text) override { m_take(text); }
  void LeaveOverview() override;
  void Show();
  void PutAway();

  Host& m_host;
  const MakeFace m_makeFace;
  const std::function<TracePane*()> m_shown;
  const std::function<void(const std::string&)> m_take;
  ChildFrameFace* m_window = nullptr;
  std::unique_ptr<OverviewStrip> m_strip;  // null: put away
  std::unique_ptr<OverviewFace> m_face;
};
