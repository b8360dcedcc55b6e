// The accelerator keys of the main window: each is known once and runs its command.
//
// A key whose command is disabled is swallowed, and a focused edit does not see an accelerator
// before the main window does. Inside a modal dialog the keys belong to the dialog.
//
// Owner    Owned by the main window.
// Threads  Interface thread.
#pragma once

#include <QKeySequence>
#include <QObject>
#include <QSet>

#include "shell/ui/command_actions.h"

class AcceleratorKeys : public QObject {
 public:
  // The keys of Accelerators().
  AcceleratorKeys(CommandActions& actions, QWidget& window);
  // A key that works in the main window only: Ctrl+F4, Alt+F4, Shift+F10.
  void AddWindowKey(const QKeySequence& key, const std::function<void()>& run);

  bool eventFilter(QObject* watched, QEvent* event) override;

 private:
  void Add(const QKeySequence& key, Qt::ShortcutContext context, const std::function<void()>& run);
  QWidget& m_window;
  QSet<int> m_keys;  // key and modifiers
};
