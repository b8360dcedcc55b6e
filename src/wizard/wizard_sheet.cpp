#include "wizard/wizard_sheet.h"

#include <utility>

#include "config/document/config_window.h"
#include "docview/win_app.h"
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

void CTraceWizardSheet::NoteConnection(const std::string& machine, const std::string& why) {
  Note(why.empty() ? "" : "Cannot configure " + machine + ": " + why);
}

void CTraceWizardSheet::Note(const std::string& notice) {
  const bool wasNoted = std::exchange(m_isNoted, !notice.empty());
  if (m_isNoted || wasNoted) m_program.ConfigTemplate()->App()->ShowNotice(notice);
}
