// The menu bar of the active document and the pop-ups, built from the menu resources.
//
// Shape    A bar's menus are made once and stay, with an action of their own for every item: a
//          client of the accessibility bus identifies an item by its action and its menu, and
//          caches both. Only the recent files and the open windows are added and removed.
// Owner    Owned by the main window.
// Threads  Interface thread.
#pragma once

#include <QMainWindow>
#include <functional>
#include <map>
#include <memory>
#include <vector>

#include "docview/frame.h"
#include "shell/menus/menu_resources.h"
#include "shell/ui/command_actions.h"

class Menus : public QObject {
 public:
  // REQUIRES: `frame` outlives this or the next Detach.
  Menus(CommandActions& actions, CMDIFrameWnd& frame, QMainWindow& window);
  void Detach() { m_frame = nullptr; }

  // Replaces the whole bar.
  void SetBar(unsigned resource);
  // Updates the recent files, the open windows and the states of all items. An open menu keeps its
  // items.
  void Refresh();
  // Shows a pop-up, with more items at its end, and returns the chosen command, 0 for none.
  unsigned Track(unsigned resource, const QPoint& screen, const std::vector<MenuItem>& more);

 private:
  struct Entry {
    QString text;
    QString prompt;
    bool checked = false;
    std::function<void()> run;  // empty: the entry is grey
  };
  using Entries = std::vector<Entry>;
  // Changing items of a menu, before a fixed item or, without one, at the end.
  struct Changing {
    QAction* before = nullptr;
    QString ifNone;          // a grey item if there are none; may be empty
    bool separated = false;  // a separator comes before them, if there are any
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
  QMenu* Submenu(const MenuItem& item, QMenu* parent);
  QMenu* ProxyMenu(const MenuItem& item, QMenu* parent);
  void RefreshMenu(OneMenu& menu);
  void Fill(QMenu& menu, Changing& part);
  Entries RecentFiles();
  Entries OpenWindows();
  Entries Profiles();
  void RunProfile(const std::string& name);
  void ListProfiles(QMenu& menu);
  void Activate(const CMDIChildWnd* child);

  CommandActions& m_actions;
  CMDIFrameWnd* m_frame;
  QMainWindow& m_window;
  unsigned m_resource = 0;
  std::map<unsigned, std::vector<OneMenu>> m_bars;
  std::vector<std::unique_ptr<OneMenu>> m_profiles;  // one in each bar that has it
};
