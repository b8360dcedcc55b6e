// A widget with keys of its own, although the main window has commands on them: those for copying
// and for choosing everything, say, in a text.
#pragma once

#include <QKeyEvent>

class KeyKeeper {
 public:
  virtual bool KeepsKey(const QKeyEvent& key) const {
    return key.matches(QKeySequence::Copy) || key.matches(QKeySequence::SelectAll);
  }

 protected:
  ~KeyKeeper() = default;
  // For the widget's event(): true, the key is claimed before the commands of the window.
  bool ClaimsKey(QEvent& event) const {
    if (event.type() != QEvent::ShortcutOverride) return false;
    if (!KeepsKey(static_cast<const QKeyEvent&>(event))) return false;
    event.accept();
    return true;
  }
};
