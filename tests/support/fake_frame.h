// Frames and views without windows: they record all calls in one log.
//
// Shape    Log lines: "child title web.trc", "child show", "child activate", "child view list",
//          "child gone", "layout tile", "active web.trc", "active none", "main 1129 2 0",
//          "list hint 1002", "list hint 1006 from tree with object", "list message 1128 1002 0",
//          "list activated", "list deactivated", "list initial update", "list gone".
// Owner    The log belongs to the test and outlives the windows.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "docview/document.h"
#include "docview/frame.h"
#include "docview/win_app.h"
#include "support/sized_control.h"

class FrameLog {
 public:
  void Add(std::string line) { m_lines.push_back(std::move(line)); }
  void Clear() { m_lines.clear(); }
  const std::vector<std::string>& Lines() const { return m_lines; }
  std::string Reported() const {
    std::string all;
    for (const std::string& line : m_lines) all += line + "\n";
    return all;
  }
  // The lines that begin with `start`, for a test that looks at one window.
  std::string Reported(const std::string& start) const {
    std::string all;
    for (const std::string& line : m_lines) {
      if (line.rfind(start, 0) == 0) all += line + "\n";
    }
    return all;
  }

 private:
  std::vector<std::string> m_lines;
};

// A child's window: activation takes effect immediately, as in a window system.
class FakeChildFace : public ChildFrameFace {
 public:
  FakeChildFace(FrameLog& log, CMDIChildWnd& child, int widthPx, int heightPx)
      : m_widthPx(widthPx), m_heightPx(heightPx), m_log(log), m_child(child) {}
  ~FakeChildFace() override {
    m_log.Add("child gone");
    if (m_onGone) m_onGone();
  }
  void SetTitle(const std::string& title) override {
    m_title = title;
    m_log.Add("child title " + title);
  }
  void Show() override {
    m_shown = true;
    m_log.Add("child show");
    LayOut();
  }
  void Activate() override {
    m_log.Add("child activate");
    m_child.OnActivate(true);
  }
  void ShowView(CView& view) override {
    m_view = &view;
    m_log.Add("child view " + std::to_string(view.GetDlgCtrlID()));
    LayOut();
  }
  void ShowBar(ViewControl* bar) override { m_bar = bar; }
  void ShowStrip(ViewControl* strip) override { m_strip = strip; }
  void ShowBeside(ViewControl* control, BesideEdge edge, int extentPx) override {
    m_beside = control;
    m_besideEdge = edge;
    m_besidePx = extentPx;
  }
  // The user drags a border, or the window system restores or tiles the window.
  void Resize(int widthPx, int heightPx) {
    m_widthPx = widthPx;
    m_heightPx = heightPx;
    LayOut();
    m_child.OnSize(SizeType::Restored, widthPx, heightPx);
  }

  int m_widthPx, m_heightPx;
  bool m_shown = false;
  std::string m_title;
  CView* m_view = nullptr;
  ViewControl *m_bar = nullptr, *m_strip = nullptr, *m_beside = nullptr;
  BesideEdge m_besideEdge = BesideEdge::Below;
  int m_besidePx = 0;
  std::function<void()> m_onGone;  // a window system may activate another child at this point

 private:
  // Only a visible control gets its size.
  void LayOut() {
    if (!m_shown || !m_view || m_heightPx <= 0) return;
    if (auto* control = dynamic_cast<SizedControl*>(m_view->Control()))
      control->SetHeight(m_heightPx);
  }

  FrameLog& m_log;
  CMDIChildWnd& m_child;
};

// A main frame whose children have fake windows. It logs messages that reach it.
class FakeMainFrame : public CMDIFrameWnd {
 public:
  FakeMainFrame(CWinApp& app, FrameLog& log) : CMDIFrameWnd(app), m_log(log) {
    app.MainFrame() = this;
    GetHost().SetMainWindow(this);
  }
  ~FakeMainFrame() override {
    DestroyChildren();
    GetHost().SetMainWindow(nullptr);
    App().MainFrame() = nullptr;
  }
  std::unique_ptr<ChildFrameFace> CreateChildFace(CMDIChildWnd& child, int widthPx,
                                                  int heightPx) override {
    if (m_refuseFaces) return nullptr;
    return std::make_unique<FakeChildFace>(m_log, child, widthPx, heightPx);
  }
  void LayOutChildren(WindowLayout layout) override {
    static constexpr const char* kNames[] = {"cascade", "tile", "arrange icons"};
    m_log.Add(std::string("layout ") + kNames[static_cast<int>(layout)]);
  }
  void OnActiveChild(CMDIChildWnd* child) override {
    CMDIFrameWnd::OnActiveChild(child);
    m_log.Add("active " + (child ? child->Title() : "none"));
  }
  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
    if (m_onMessage && m_onMessage(message, wParam, lParam)) return 0;
    m_log.Add("main " + std::to_string(message) + " " + std::to_string(wParam) + " " +
              std::to_string(lParam));
    return CMDIFrameWnd::OnMessage(message, wParam, lParam);
  }

  bool m_refuseFaces = false;
  // True: the message was handled and is not logged. The handler frees what the message owns.
  std::function<bool(unsigned, std::uintptr_t, std::intptr_t)> m_onMessage;

 private:
  FrameLog& m_log;
};

// A view that shows nothing and logs all calls under its name.
class ProbeView : public CView {
 public:
  ProbeView(CDocument& document, FrameLog& log, std::string name = "view")
      : CView(document), m_name(std::move(name)), m_log(log) {}
  ~ProbeView() override { m_log.Add(m_name + " gone"); }

  void OnInitialUpdate() override {
    m_log.Add(m_name + " initial update");
    CView::OnInitialUpdate();
  }
  void OnUpdate(CView* sender, unsigned hint, CObject* object) override {
    std::string line = m_name + " hint " + std::to_string(hint);
    if (const auto* from = dynamic_cast<ProbeView*>(sender)) line += " from " + from->m_name;
    m_log.Add(line + (object ? " with object" : ""));
    if (m_onUpdate) m_onUpdate(sender, hint, object);
  }
  void OnActivateView(bool activate, CView*, CView*) override {
    m_log.Add(m_name + (activate ? " activated" : " deactivated"));
  }
  std::intptr_t OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) override {
    m_log.Add(m_name + " message " + std::to_string(message) + " " + std::to_string(wParam) + " " +
              std::to_string(lParam));
    return 0;
  }
  ViewControl* Control() override { return nullptr; }
  using CCmdTarget::MapCommand;
  using CCmdTarget::MapUpdate;

  const std::string m_name;
  std::function<void(CView*, unsigned, CObject*)> m_onUpdate;

 private:
  FrameLog& m_log;
};

// An application with a fake main frame, for tests of documents and views.
class FakeApp : public CWinApp {
 public:
  FakeApp(Host& host, FrameLog& log) : CWinApp(host), m_frame(*this, log), m_log(log) {}
  void ShowNotice(const std::string& notice) override { m_log.Add("notice " + notice); }
  FakeMainFrame m_frame;

 private:
  FrameLog& m_log;
};
