// The list of what could be inserted, below the edit. It never has the focus: the edit gives it the
// keys.
//
// Shape    A child of the main window above all others, so it needs no window of its own.
// Threads  Interface thread.
#pragma once

#include <QListWidget>
#include <functional>
#include <vector>

#include "where/complete/where_complete.h"

class CompletionList : public QListWidget {
 public:
  explicit CompletionList(QWidget& window);

  // At a place of the window; hides when there are none. Nothing is selected at first.
  void Offer(std::vector<WhereCompletion> completions, const QPoint& below);
  bool HasSelected() const { return currentRow() >= 0; }
  // The selected one, else the first. REQUIRES: it is visible.
  const WhereCompletion& Chosen() const;
  void Move(int rows);
  std::function<void()> m_onClicked;

 private:
  std::vector<WhereCompletion> m_completions;
};
