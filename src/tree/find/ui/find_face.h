// The window of "Find".
//
// Every control's object name is its id in decimal.
//
// Threads  Interface thread.
#pragma once

#include "docview/ui/qt_dialog_face.h"
#include "tree/find/find_dialog.h"

class QCheckBox;
class QLineEdit;
class QPushButton;

class FindFace final : public QtDialogFace {
 public:
  FindFace(CFindDialog& dialog, QWidget* parent);

  void UpdateData() override;

 protected:
  void OnAccept() override;

 private:
  void ShowOkState();

  CFindDialog& m_dialog;
  QLineEdit* m_text;
  QCheckBox* m_ignoreCase;
  QCheckBox* m_backward;
  QCheckBox* m_regularExpression;
  QCheckBox* m_wordSearch;
  QPushButton* m_ok = nullptr;
};
