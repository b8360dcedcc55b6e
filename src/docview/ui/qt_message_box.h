// A message box with exactly the caption, icon and buttons asked for.
//
// A box with Yes and No but no Cancel cannot be left unanswered: neither Esc nor the window's close
// button closes it.
#pragma once

#include <QMessageBox>

#include "docview/host.h"

class QtMessageBox final : public QMessageBox {
 public:
  QtMessageBox(const MessageBoxRequest& request, QWidget* parent);

  // The button that closed the box.
  BoxAnswer Answer() const;
  // The answer of a box that was closed without a button: the refusing one.
  static BoxAnswer Unanswered(BoxButtons buttons);

 protected:
  void closeEvent(QCloseEvent* event) override;
  void keyPressEvent(QKeyEvent* event) override;

 private:
  void MakeRoomForTitle();
  bool MustAnswer() const { return m_buttons == BoxButtons::YesNo; }
  const BoxButtons m_buttons;
};
