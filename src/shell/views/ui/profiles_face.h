// The window of the profiles.
//
// Owner    Owned by the host while the dialog runs.
// Threads  Interface thread.
#pragma once

#include <functional>

#include "docview/ui/qt_dialog_face.h"
#include "shell/views/profiles_dialog.h"

class QLabel;
class QLayout;
class QLineEdit;
class QListWidget;
class QPushButton;

class ProfilesFace final : public QtDialogFace {
 public:
  ProfilesFace(CProfilesDialog& dialog, QWidget* parent);
  void UpdateData() override;

 private:
  QPushButton* MakePress(unsigned id, const char* text, void (CProfilesDialog::*press)());
  QLayout* MakeList();
  QLayout* MakeName();
  QLayout* MakeEnd();
  void ShowNames();
  void ShowState();

  CProfilesDialog& m_dialog;
  QListWidget* m_profiles;
  QLineEdit* m_name;
  QLabel* m_description;
  bool m_showing = false;
};
