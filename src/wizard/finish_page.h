// The last page: turns the wizard's tables into configuration windows and a monitor.
//
// Errors   Message boxes of the windows. A machine that cannot be reached is passed over, and the
//          status bar says why.
// Threads  Interface thread. A machine is asked for at most 5 seconds to connect, and as long twice
//          for each application; behind a question without an answer it is not asked on.
#pragma once

#include "wizard/tables/wizard_tables.h"
#include "wizard/wizard_page.h"

class CConfigDoc;

class CWizFinishPage : public CWizPage {
 public:
  explicit CWizFinishPage(Host& host);

  void OnSetActive() override;
  int OnWizardBack() override;
  int OnWizardFinish() override;

 private:
  void Configure(const std::string& name, WizMachine& machine);
  CConfigDoc* FindOrCreateConfigDoc(const std::string& machine);
};
