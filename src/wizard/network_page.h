// The page that asks whether other machines than this one are configured.
//
// Threads  Interface thread; Next asks this machine's service, for at most 10 seconds.
#pragma once

#include "wizard/wizard_page.h"

class CWizNetworkPage : public CWizPage {
 public:
  // Controls: a radio button for each mode, kMode + its number.
  static constexpr unsigned kMode = 0x4021;
  enum Mode : int { kLocal = 0, kLocalAndRemote = 1 };

  explicit CWizNetworkPage(Host& host);

  void OnSetActive() override;
  // Local: the table is this machine and its applications.
  int OnWizardNext() override;

  int m_nNetworkMode;

 private:
  bool EnterLocalMachine();
};
