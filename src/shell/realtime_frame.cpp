#include "shell/realtime_frame.h"

#include <algorithm>
#include <utility>

#include "documents/trace_realtime_doc.h"
#include "docview/commands/command_ids.h"
#include "settings/globals.h"

namespace {

// The interval is set by hand: a shorter one would leave no time for anything else.
constexpr unsigned kShortestIntervalMs = 10;

}  // namespace

CTraceRealtimeFrame::CTraceRealtimeFrame(CMainFrame& parent) : CTraceChildFrame(parent) {
  MapCommand(
      ID_FILE_CAPTURE,
      [this] {
        if (CTraceRealtimeDoc* const monitor = ActiveMonitor()) monitor->ToggleCapture();
      },
      [this](CCmdUI& ui) {
        const CTraceRealtimeDoc* const monitor = ActiveMonitor();
        ui.Enable(monitor != nullptr);
        ui.SetCheck(monitor && monitor->IsCapturing());
      });
}

void CTraceRealtimeFrame::PreCreateWindow(int& widthPx, int& heightPx) {
  CTraceChildFrame::PreCreateWindow(widthPx, heightPx);
}

void CTraceRealtimeFrame::OnCreate() {
  CTraceChildFrame::OnCreate();
  m_timer = GetHost().SetTimer(std::max(g_updateInterval, kShortestIntervalMs),
                               [this] { OnTimer(TRACE_TIMER_ID); });
}

void CTraceRealtimeFrame::OnDestroy() {
  if (m_timer) GetHost().KillTimer(std::exchange(m_timer, 0));
  // The monitor may have another window, which shows what the text of this one would withhold.
  Filter().Line().SetAtSource(false);
  CTraceChildFrame::OnDestroy();
}

void CTraceRealtimeFrame::OnTimer(unsigned) {
  CTraceRealtimeDoc* const monitor = ActiveMonitor();
  // Long work reads the traces, so they must not change; new ones wait in their queue.
  if (monitor && !monitor->IsBusy()) monitor->Drain();
  Filter().Line().Tick();
}

CTraceRealtimeDoc* CTraceRealtimeFrame::ActiveMonitor() const {
  return dynamic_cast<CTraceRealtimeDoc*>(GetActiveDocument());
}
