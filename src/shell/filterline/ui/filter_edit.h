// The edit of the line of filter text: underlines an error where it stands.
//
// While it has the focus the keys for copying and selecting everything are its own, although the
// main window has commands on them (KeepsKey).
//
// Threads  Interface thread.
#pragma once

#include <QLineEdit>
#include <functional>

#include "docview/ui/key_keeper.h"

class FilterEdit : public QLineEdit, public KeyKeeper {
 public:
  explicit FilterEdit(QWidget* parent);

  // Readable on this ground, light or dark.
  static QColor ErrorColor(const QColor& ground);
  // In characters of the text; length 0: nothing.
  void Underline(int from, int length);
  QRect CaretRect() const { return cursorRect(); }
  // True: it has handled the key.
  std::function<bool(const QKeyEvent& key)> m_onKey;
  std::function<void()> m_onLeft;  // the focus went elsewhere

 protected:
  bool event(QEvent* event) override;
  void focusOutEvent(QFocusEvent* event) override;
};
