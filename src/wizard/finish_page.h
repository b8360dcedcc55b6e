// The last page: turns the wizard's tables into configuration windows and a monitor.
//
// Errors   Message boxes of the windows. A machine that cannot be reached is passed over, and the
//          status bar says which and why.
// Threads  Interface thread. A machine is asked for at most 5 seconds to connect, and as long twice
//          for each application; behind a question without an answer it is not asked on. Many
//          applications are long work.
#pragma once

#include <string>
#include <vector>

#include "wizard/tables/chosen_apps.h"
#include "wizard/what_is_left.h"
#include "wizard/wizard_page.h"

class CConfigDoc;

class CWizFinishPage : public CWizPage {
 public:
  explicit CWizFinishPage(Host& host);

  void OnSetActive() override;
  int OnWizardBack() override;
  int OnWizardFinish() override;

 private:
  // `file` is the .tcf file that the applications are from; empty: none.
  void Configure(const std::string& machine, const std::string& file, ChosenApps& apps);
  CConfigDoc* FindOrCreateConfigDoc(const std::string& machine);

  std::vector<LeftMachine> m_left;
  bool m_cancelled = false;
};
