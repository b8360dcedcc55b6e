// The Qt class of the main frame: menu bar, tool bar, status panes, MDI area.
//
// Owner    Owned by the main frame; owns its window.
// Threads  Interface thread.
#pragma once

#include <QToolBar>
#include <functional>

#include "shell/faces.h"
#include "shell/mdi/ui/mdi_area.h"
#include "shell/ui/accelerator_keys.h"
#include "shell/ui/main_window.h"
#include "shell/ui/menus.h"
#include "shell/ui/status_panes.h"

class QtMainFrame : public MainFrameFace {
 public:
  // `closed` runs when the frame has closed its window finally.
  QtMainFrame(CMainFrame& frame, int widthPx, int heightPx, std::function<void()> closed);
  ~QtMainFrame() override;

  void SetTitle(const std::string& title) override;
  void SetMenu(unsigned resource) override;
  void SetPaneText(unsigned pane, const std::string& text) override;
  void SetPaneToolTip(unsigned pane, const std::string& text) override;
  void Show(bool maximised) override;
  void Close() override;
  std::unique_ptr<ChildFrameFace> CreateChild(CMDIChildWnd& child, int widthPx,
                                              int heightPx) override;
  void LayOutChildren(WindowLayout layout) override;
  void ShowTabs(bool on) override;
  void TrackPopupMenu(unsigned resource, int screenXPx, int screenYPx,
                      const std::vector<MenuItem>& more) override;
  void ShowBar(unsigned id, bool on) override;
  bool IsBarShown(unsigned id) const override;
  void RecentFilesChanged() override;

  MainWindow& Window() const { return *m_window; }
  MdiArea& Area() const { return *m_area; }
  StatusPanes& Panes() const { return *m_panes; }
  QToolBar& ToolBar() const { return *m_toolBar; }
  CommandActions& Actions() const { return *m_actions; }

 private:
  void MakeToolBar();
  void AddSystemKeys();
  void Idle();
  void ChildChanged();
  QWidget* Bar(unsigned id) const;

  CMainFrame& m_frame;
  std::function<void()> m_closed;
  MainWindow* m_window;
  // All owned by the window.
  CommandActions* m_actions;
  Menus* m_menus;
  AcceleratorKeys* m_keys;
  MdiArea* m_area;
  StatusPanes* m_panes;
  QToolBar* m_toolBar;
};
