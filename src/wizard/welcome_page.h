// The first page: says what the wizard is for, and whether it opens when the program starts.
//
// Threads  Interface thread.
#pragma once

#include "wizard/wizard_page.h"

class CWizWelcomePage : public CWizPage {
 public:
  static constexpr unsigned kAutoStart = 0x4001;  // control

  explicit CWizWelcomePage(Host& host);

  void OnSetActive() override;
  // A click on the check box: the choice is stored at once.
  void OnAutoStart();

  int m_bAutoStart;
};
