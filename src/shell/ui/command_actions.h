// The actions of the tool bar and the menus. All menu items, buttons and keys run their commands
// here.
//
// Shape    The actions have no shortcuts: AcceleratorKeys handles the keys, so that no key is
//          ambiguous.
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
  // The target is destroyed: from now on every command is disabled.
  void Detach() { m_target = nullptr; }

  // The tool bar's action, made at the first call.
  QAction* Action(unsigned id);
  // An action for a permanent menu, with a text of its own.
  QAction* Item(unsigned id, const QString& text, QMenu* menu);
  // An action with the state of a command but a text of its own, for a pop-up, whose owner runs the
  // command after the pop-up has closed.
  QAction* Proxy(unsigned id, const QString& text, QObject* owner);

  // Update the enabled and checked state: of one action, of the tool bar's, of those in a menu.
  // Each action costs a look-up in the targets' tables.
  void Update(unsigned id, QAction& action);
  void UpdateAll();
  void UpdateMenu(QMenu& menu);
  // Updates the state, then runs the command if it is enabled.
  bool Run(unsigned id);

  // Called after every command, for other windows that show states.
  std::function<void()> m_afterCommand;
  // Called with the reason when a disabled command is requested, by its key for instance.
  std::function<void(const QString& whyNot)> m_refused;

 private:
  void SetUp(QAction& action, unsigned id);
  CCmdTarget* m_target;
  std::map<unsigned, QAction*> m_actions;
};
