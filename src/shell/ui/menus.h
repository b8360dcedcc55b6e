// The menu bar of the active document and the pop-ups, built from the menu resources.
//
// Shape    A bar's menus are made once and stay, with an action of their own for every item: a
//          client of the accessibility bus knows an item by its action and the menu that it met it
//          in, and keeps both. Only the recent files and the open windows come and go.
// Owner    Owned by the main window.
// Threads  Interface thread.
#pragma once

#include <QMainWindow>
#include <functional>
#include <map>
#include <vector>

#include "docview/frame.h"
#include "shell/menu_resources.h"
#include "shell/ui/command_actions.h"

class Menus : public QObject {
 public:
  // REQUIRES: `frame` outlives this or the next Detach.
  Menus(CommandActions& actions, CMDIFrameWnd& frame, QMainWindow& window);
  void Detach() { m_frame = nullptr; }

  // Swaps the whole bar.
  void SetBar(unsigned resource);
  // Brings the recent files, the open windows and the states of all items up to date. A menu that
  // is open keeps its items.
  void Refresh();
  // Shows a pop-up and gives the command chosen, 0 for none.
  unsigned Track(unsigned resource, const QPoint& screen);

 private:
  struct Entry {
    QString text;
    QString prompt;
    bool checked = false;
    std::function<void()> run;  // empty: the entry is grey
  };
  using Entries = std::vector<Entry>;
  // Items of a menu that come and go, in front of a fixed one or, without one, at the end.
  struct Changing {
    QAction* before = nullptr;
    QString ifNone;          // a grey item for when there are none; may be empty
    bool separated = false;  // a line stands in front of them, if there are any
    Entries (Menus::*wanted)() = nullptr;
    Entries shown;
    std::vector<QAction*> actions;
  };
  struct OneMenu {
    QMenu* menu;
    std::vector<Changing> changing;
  };

  void MakeBar(unsigned resource);
  OneMenu MakeMenu(const MenuPopup& popup);
  void RefreshMenu(OneMenu& menu);
  void Fill(QMenu& menu, Changing& part);
  Entries RecentFiles();
  Entries OpenWindows();
  void Activate(const CMDIChildWnd* child);

  CommandActions& m_actions;
  CMDIFrameWnd* m_frame;
  QMainWindow& m_window;
  unsigned m_resource = 0;
  std::map<unsigned, std::vector<OneMenu>> m_bars;
};
