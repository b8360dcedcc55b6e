// The status bar: message, keyboard states, filter mark and row count, each in a pane of its own.
//
// Threads  Interface thread.
#pragma once

#include <QLabel>
#include <QStatusBar>
#include <map>

#include "shell/ui/keyboard_locks.h"

class StatusPanes : public QStatusBar {
 public:
  explicit StatusPanes(QWidget* parent);

  // An unknown pane is ignored.
  void SetPaneText(unsigned pane, const QString& text);
  QString PaneText(unsigned pane) const;
  void SetPaneToolTip(unsigned pane, const QString& text);
  void ShowLocks(const KeyboardLocks& locks);

 protected:
  void changeEvent(QEvent* event) override;

 private:
  void SizePanes();
  std::map<unsigned, QLabel*> m_panes;
};
