// What stands around a view under test: a main window and a second view that log what they
// receive.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "documents/trace_hint.h"
#include "docview/view.h"

// "rows 5", "rows cleared", "filtered 1".
class PaneProbe final : public CWnd {
 public:
  explicit PaneProbe(Host& host) : CWnd(host) { host.SetMainWindow(this); }
  ~PaneProbe() override { GetHost().SetMainWindow(nullptr); }
  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t) override {
    const char* what = message == WM_TRACE_ROWCOUNT ? "rows " : "filtered ";
    const auto value = static_cast<std::intptr_t>(wParam);
    reported.push_back(what + (value == -1 ? std::string("cleared") : std::to_string(value)));
    return 0;
  }
  std::vector<std::string> Reported() { return std::exchange(reported, {}); }
  std::vector<std::string> reported;
};

// A second view of the document that writes down hint 1006.
class FollowProbe final : public CView {
 public:
  using CView::CView;
  void OnUpdate(CView*, unsigned hint, CObject* object) override {
    if (hint == kHintFollow) followed.push_back(dynamic_cast<CTraceHint&>(*object).m_events.at(0));
  }
  ViewControl* Control() override { return nullptr; }
  std::vector<TraceEvent_i*> followed;
};
