// The window of one child frame: the view, and what stands beside it.
//
// Owner    The frame owns its window; the window borrows the controls that it shows.
// Threads  Interface thread.
#pragma once

#include <string>

class CView;
class ViewControl;

enum class BesideEdge { Below = 0, Right = 1 };

class ChildFrameFace {
 public:
  virtual ~ChildFrameFace() = default;
  virtual void SetTitle(const std::string& title) = 0;
  virtual void Show() = 0;      // with the state that a new child takes in its main window
  virtual void Activate() = 0;  // to the front; answers with CMDIChildWnd::OnActivate
  virtual void ShowView(CView& view) = 0;  // the only visible view
  // ---- beside the view. The caller owns the controls; null: none.
  // A control above the view, and one between that and the view.
  virtual void ShowBar(ViewControl* bar) = 0;
  virtual void ShowStrip(ViewControl* strip) = 0;
  // A control that shares the room with the view. It takes `extentPx` of the height (Below) or of
  // the width (Right); 0: the window chooses. Where both do not fit the view keeps a few lines. The
  // user may move the border: CMDIChildWnd::OnBesideExtent.
  virtual void ShowBeside(ViewControl* control, BesideEdge edge, int extentPx) = 0;
};
