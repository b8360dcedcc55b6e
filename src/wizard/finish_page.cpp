#include "wizard/finish_page.h"

#include <iterator>

#include "config/document/config_window.h"
#include "config/used_machines.h"
#include "wizard/tables/configure_app.h"
#include "wizard/wizard_sheet.h"

CWizFinishPage::CWizFinishPage(Host& host) : CWizPage(host, kFinishPage, "Trace Wizard: Finish") {}

void CWizFinishPage::OnSetActive() {
  Wizard().SetWizardButtons(PSWIZB_BACK | PSWIZB_FINISH);
}

int CWizFinishPage::OnWizardBack() {
  CTraceWizardSheet& wizard = Wizard();
  WizMachines& machines = wizard.m_machines;
  if (machines.empty()) return kWizardStay;
  const auto machine = wizard.IsIdentical() ? machines.begin() : std::prev(machines.end());
  wizard.ApplicationPage().m_itMachine.Set(machines, machine);
  WizApps& apps = machine->second.m_apps;
  auto app = apps.end();
  while (app != apps.begin() && !(--app)->second.m_bSelected) {
  }
  wizard.TracesPage().m_itApp.Set(apps, app);
  return CWizPage::OnWizardBack();
}

int CWizFinishPage::OnWizardFinish() {
  const CWaitCursor wait(GetHost());
  CTraceWizardSheet& wizard = Wizard();
  for (auto& [name, machine] : wizard.m_machines) Configure(name, machine);
  if (!wizard.m_machines.empty()) wizard.Program().OpenLocalMonitor();
  return CWizPage::OnWizardFinish();
}

CConfigDoc* CWizFinishPage::FindOrCreateConfigDoc(const std::string& machine) {
  CMultiDocTemplate& configurations = *Wizard().Program().ConfigTemplate();
  if (CConfigDoc* const open = FindConfigWindow(configurations, machine)) {
    open->DeleteContents();
    return open;
  }
  CConfigDoc* const made = OpenConfigWindow(configurations, machine);
  if (made) NoteUsedMachine(machine);
  return made;
}

void CWizFinishPage::Configure(const std::string& name, WizMachine& machine) {
  CConfigDoc* const document = FindOrCreateConfigDoc(name);
  if (!document) return;
  for (auto& [appName, entry] : machine.m_apps) {
    if (!entry.m_bSelected || !entry.m_app) continue;
    trace_App_i* const app = document->AddApplication(appName);
    if (app) document->NoteSubmit(*app, ConfigureApp(entry, *app));
  }
  if (!machine.m_strConfigFile.empty()) document->SetModifiedFlag(false);
}
