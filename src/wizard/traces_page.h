// The page that sets the traces of one chosen application after the other. Nothing goes to a
// machine from here.
//
// Threads  Interface thread.
#pragma once

#include "config/traces/traces_list.h"
#include "wizard/tables/wizard_tables.h"
#include "wizard/wizard_page.h"

class CWizTracesPage : public CWizPage {
 public:
  explicit CWizTracesPage(Host& host);

  void OnSetActive() override;
  int OnWizardBack() override;
  // Writes the rows into the table. The page stays and shows the next chosen application, as long
  // as there is one.
  int OnWizardNext() override;
  CTracesList& Traces() { return m_traces; }
  // What the machine keeps for later starts of the application; empty: nothing.
  const std::string& Note() const { return m_note; }

  // The application that is worked on, of the machine of the application page.
  WizPlace<WizApps> m_itApp;

 private:
  void TakeRows(WizTraces& traces) const;
  int Reload(WizApps& apps, WizApps::iterator app);

  CTracesList m_traces;
  std::string m_note;
};
