// The window of "Go to Time" and "Go to Row".
//
// The object names of the controls: "text", "hint", "why", "go".
//
// Threads  Interface thread.
#pragma once

#include <QLabel>
#include <QLineEdit>
#include <QPushButton>

#include "docview/ui/qt_dialog_face.h"
#include "shell/goto/go_to_dialog.h"

class GoToFace final : public QtDialogFace {
 public:
  GoToFace(CGoToDlg& dialog, QWidget* parent);
  void UpdateData() override;

 private:
  void OnAccept() override;
  void SetUpTexts();
  void ShowWhy();
  void Grow();

  CGoToDlg& m_goTo;
  QLineEdit* m_text;
  QLabel* m_hint;
  QLabel* m_why;
};
