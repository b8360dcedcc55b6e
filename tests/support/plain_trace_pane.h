// A pane without rows, and a control without a window, for tests of what stands beside a pane.
#pragma once

#include <algorithm>

#include "listview/details/trace_iterator.h"
#include "panes/trace_pane.h"

class PlainControl final : public ViewControl {
 public:
  void SetFocus() override { ++m_focused; }
  int m_focused = 0;
};

class PlainTracePane final : public TracePane {
 public:
  using TracePane::TracePane;
  ViewControl* Control() override { return &m_control; }
  TraceEvent_i* CurrentEvent() const override { return m_current; }
  // The user goes there.
  void GoToTrace(TraceEvent_i* event) {
    m_current = event;
    Tell(&PaneWatcher::OnCurrentTrace);
  }

  PlainControl m_control;
  TraceEvent_i* m_current = nullptr;

 private:
  int TraceCount() const override { return 0; }
  bool ShowsAny() const override { return false; }
  void RepaintHits() override {}
  bool Rebuild() override { return true; }
  void OnReady() override {}
  void AddTraces(const CTraceHint&) override {}
  void RemoveTraces(const CTraceHint& hint) override {
    if (std::ranges::find(hint.m_events, m_current) != hint.m_events.end()) m_current = nullptr;
  }
  void FollowTrace(CView*, const TraceEvent_i&) override {}
  std::unique_ptr<CTraceIterator> MakeIterator() override { return nullptr; }
  void Find(bool) override {}
  void OnExport() override {}
};
