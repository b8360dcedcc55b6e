// The actions of the tool bar and of the menus, and the one way in which a menu item, a button or a
// key becomes a command.
//
// Shape    The actions have no shortcuts: keys are AcceleratorKeys' business, so that no key is
//          known twice.
// Owner    Owned by the main window, which outlives the tool bar.
// Errors   A command that is disabled when it is asked for is not run.
// Threads  Interface thread.
#pragma once

#include <QAction>
#include <QMenu>
#include <functional>
#include <map>

#include "docview/commands/command.h"

class CommandActions : public QObject {
 public:
  // REQUIRES: `target` outlives this or the next Detach.
  CommandActions(CCmdTarget& target, QWidget& window);
  // The target goes: from now on every command is disabled.
  void Detach() { m_target = nullptr; }

  // The tool bar's action, made at the first asking.
  QAction* Action(unsigned id);
  // An action for a menu that stays, with a text of its own.
  QAction* Item(unsigned id, const QString& text, QMenu* menu);
  // An action with the state of a command but a text of its own, for a pop-up, whose owner runs the
  // command when the pop-up is gone.
  QAction* Proxy(unsigned id, const QString& text, QObject* owner);

  // Bring the enabled and checked state up to date: of one action, of the tool bar's, of those in a
  // menu. Each action costs a look-up in the targets' tables.
  void Update(unsigned id, QAction& action);
  void UpdateAll();
  void UpdateMenu(QMenu& menu);
  // Looks at the state anew, then runs the command if it is enabled.
  bool Run(unsigned id);

  // Called after every command, for whatever shows states beside the actions.
  std::function<void()> m_afterCommand;
  // Called with what a disabled command lacks when it is asked for, by its key for instance.
  std::function<void(const QString& whyNot)> m_refused;

 private:
  void SetUp(QAction& action, unsigned id);
  CCmdTarget* m_target;
  std::map<unsigned, QAction*> m_actions;
};
