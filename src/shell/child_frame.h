// The window around a trace document's views: a list view and, from the first time it is asked for,
// a tree view, one of which shows.
//
// Threads  Interface thread.
#pragma once

#include "docview/frame.h"

class CMainFrame;
class CProcView;
class CTraceView;

class CTraceChildFrame : public CMDIChildWnd {
 public:
  explicit CTraceChildFrame(CMainFrame& parent);

  // All frames of trace documents share one stored size: the last one sized sets it for the next.
  void PreCreateWindow(int& widthPx, int& heightPx) override;
  void OnSize(SizeType type, int widthPx, int heightPx) override;
  // As the trace windows were when they were last sized.
  bool BeginsMaximised() const override;
  // Pop-up 144, commands routed as from the menus.
  void OnContextMenu(int screenXPx, int screenYPx) override;

  bool IsTreeShown() const { return m_treeShown; }

 private:
  static constexpr unsigned kOtherPane = 59649;  // of the view that does not show

  void OnToggleTree();
  // Give the other view what it needs to show; false: the toggle is cancelled.
  bool HandToList();
  bool HandToTree();

  CMainFrame& m_main;
  bool m_treeShown = false;
  CProcView* m_tree = nullptr;   // null until the first toggle
  CTraceView* m_list = nullptr;  // null until the first toggle
};
