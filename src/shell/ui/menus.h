// The menu bar of the active document and the pop-ups, built from the menu resources.
//
// Owner    Owned by the main window. The menus show the shared actions of CommandActions.
// Threads  Interface thread.
#pragma once

#include <QMainWindow>
#include <QPointer>

#include "docview/frame.h"
#include "shell/menu_resources.h"
#include "shell/ui/command_actions.h"

class Menus : public QObject {
 public:
  // REQUIRES: `frame` outlives this or the next Detach.
  Menus(CommandActions& actions, CMDIFrameWnd& frame, QMainWindow& window);
  void Detach() { m_frame = nullptr; }

  // Swaps the whole bar; one that stands already stays.
  void SetBar(unsigned resource);
  // The recent files and the open windows are filled in anew.
  void Refresh();
  // Shows a pop-up and gives the command chosen, 0 for none.
  unsigned Track(unsigned resource, const QPoint& screen);

 private:
  void Fill(QMenu& menu, const MenuPopup& popup);
  void AddRecentFiles(QMenu& menu, const MenuItem& item);
  void AddWindowList(QMenu& menu);

  CommandActions& m_actions;
  CMDIFrameWnd* m_frame;
  QMainWindow& m_window;
  unsigned m_resource = 0;
  std::vector<QPointer<QMenu>> m_menus;
};
