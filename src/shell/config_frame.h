// The window around a configuration view. Its size is stored apart from that of trace windows.
//
// Threads  Interface thread.
#pragma once

#include "docview/frame.h"

class CMainFrame;

class CConfigFrame : public CMDIChildWnd {
 public:
  explicit CConfigFrame(CMainFrame& parent);

  void PreCreateWindow(int& widthPx, int& heightPx) override;
  void OnSize(SizeType type, int widthPx, int heightPx) override;
  // Pop-up 143, commands routed as from the menus.
  void OnContextMenu(int screenXPx, int screenYPx) override;

 private:
  CMainFrame& m_main;
};
