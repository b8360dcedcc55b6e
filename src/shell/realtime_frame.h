// The window around a monitor's views: the timer of its drain and the command of its capture.
//
// Threads  Interface thread.
#pragma once

#include "shell/child_frame.h"

class CTraceRealtimeDoc;

constexpr unsigned TRACE_TIMER_ID = 2001;

class CTraceRealtimeFrame : public CTraceChildFrame {
 public:
  explicit CTraceRealtimeFrame(CMainFrame& parent);

  void PreCreateWindow(int& widthPx, int& heightPx) override;
  // Starts the timer with the update interval; below 10 ms it runs at 10.
  void OnCreate() override;
  void OnDestroy() override;
  // Whatever the id: drains the active view's document if it is a monitor. Without an active view
  // the traces wait for the next tick.
  void OnTimer(unsigned id);

 private:
  // The active view's document; null if it is not a monitor.
  CTraceRealtimeDoc* ActiveMonitor() const;
  TimerId m_timer = 0;  // the host's number of TRACE_TIMER_ID; 0 while it does not run
};
