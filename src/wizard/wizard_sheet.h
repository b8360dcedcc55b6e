// The Trace Wizard: seven pages that lead through the common tasks.
//
// What the user chooses is collected in the sheet's tables. Only Finish turns them into windows and
// into settings on machines. Cancel leaves every machine and every window as it was.
//
// Owner    The sheet owns its pages and its tables; it borrows the program.
// Threads  Interface thread.
#pragma once

#include "docview/sheet/property_sheet.h"
#include "wizard/application_page.h"
#include "wizard/finish_page.h"
#include "wizard/machines_page.h"
#include "wizard/network_page.h"
#include "wizard/select_page.h"
#include "wizard/tables/wizard_tables.h"
#include "wizard/traces_page.h"
#include "wizard/welcome_page.h"
#include "wizard/wizard_program.h"

class CTraceWizardSheet : public CPropertySheet {
 public:
  CTraceWizardSheet(Host& host, WizardProgram& program);

  WizardProgram& Program() const { return m_program; }
  bool IsRemote() const { return m_network.m_nNetworkMode == CWizNetworkPage::kLocalAndRemote; }
  // Are several machines configured the same?
  bool IsIdentical() const { return IsRemote() && m_machinesPage.m_bIdentical != 0; }
  // Enters the applications of an open configuration of this machine.
  void MergeOpenConfiguration(WizMachines::iterator machine);
  // Shows in the status bar why there is no connection with a machine. An empty reason: there is
  // one, and what was shown is removed.
  void NoteConnection(const std::string& machine, const std::string& why);
  // Shows a notice in the status bar. An empty one removes what was shown.
  void Note(const std::string& notice);

  CWizWelcomePage& WelcomePage() { return m_welcome; }
  CWizSelectPage& SelectPage() { return m_select; }
  CWizNetworkPage& NetworkPage() { return m_network; }
  CWizMachinesPage& MachinesPage() { return m_machinesPage; }
  CWizApplicationPage& ApplicationPage() { return m_application; }
  CWizTracesPage& TracesPage() { return m_traces; }
  CWizFinishPage& FinishPage() { return m_finish; }

  WizMachines m_machines;

 private:
  WizardProgram& m_program;
  bool m_isNoted = false;
  CWizWelcomePage m_welcome;
  CWizSelectPage m_select;
  CWizNetworkPage m_network;
  CWizMachinesPage m_machinesPage;
  CWizApplicationPage m_application;
  CWizTracesPage m_traces;
  CWizFinishPage m_finish;
};
