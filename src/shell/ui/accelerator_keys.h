// The accelerator keys of the main window: each is registered once and runs its command.
//
// A key whose command is disabled is swallowed, and a focused edit does not get an accelerator
// before the main window. Inside a modal dialog the keys belong to the dialog, and in an
// independent window, such as the help, to that window.
//
// Owner    Owned by the main window.
// Threads  Interface thread.
#pragma once

#include <QKeySequence>
#include <QObject>
#include <QSet>
#include <QShortcut>

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
  void Arm(const QWindow* focus);
  QWidget& m_window;
  QSet<int> m_keys;  // key and modifiers
  QList<QShortcut*> m_everywhere;
};
