// The Qt class of a child frame.
//
// Owner    Owned by the frame; owns its window. The controls belong to their views.
// Threads  Interface thread.
#pragma once

#include "docview/frame.h"
#include "shell/mdi/ui/child_window.h"

class QtChildFrame : public ChildFrameFace {
 public:
  // A size of 0 or less takes three quarters of the area.
  QtChildFrame(CMDIChildWnd& child, MdiArea& area, int widthPx, int heightPx);
  ~QtChildFrame() override;

  void SetTitle(const std::string& title) override;
  void Show() override;
  void Activate() override;
  void ShowView(CView& view) override;
  void ShowBar(ViewControl* bar) override;
  void ShowStrip(ViewControl* strip) override;
  void ShowBeside(ViewControl* control, BesideEdge edge, int extentPx) override;

  ChildWindow* Window() const { return m_window; }

 private:
  bool BeginsMaximised() const;
  MdiArea& m_area;
  QPointer<ChildWindow> m_window;
};
