#include "wizard/wizard_sheet.h"

#include "config/document/config_window.h"
#include "wizard/tables/machine_apps.h"

CTraceWizardSheet& CWizPage::Wizard() const {
  return static_cast<CTraceWizardSheet&>(*Sheet());
}

CTraceWizardSheet::CTraceWizardSheet(Host& host, WizardProgram& program)
    : CPropertySheet(host, "Setup Wizard"),
      m_program(program),
      m_welcome(host),
      m_select(host),
      m_network(host),
      m_machinesPage(host),
      m_application(host),
      m_traces(host),
      m_finish(host) {
  SetWizardMode();
  for (CPropertyPage* const page :
       {static_cast<CPropertyPage*>(&m_welcome), static_cast<CPropertyPage*>(&m_select),
        static_cast<CPropertyPage*>(&m_network), static_cast<CPropertyPage*>(&m_machinesPage),
        static_cast<CPropertyPage*>(&m_application), static_cast<CPropertyPage*>(&m_traces),
        static_cast<CPropertyPage*>(&m_finish)})
    AddPage(*page);
}

void CTraceWizardSheet::MergeOpenConfiguration(WizMachines::iterator machine) {
  const CConfigDoc* const open = FindConfigWindow(*m_program.ConfigTemplate(), machine->first);
  if (open) EnterOpenApps(machine->second, open->GetApplications()->m_apps, open->NotInForce());
}
