#include "wizard/finish_page.h"

#include <iterator>

#include "config/document/config_window.h"
#include "config/used_machines.h"
#include "settings/globals.h"
#include "wizard/tables/configure_app.h"
#include "wizard/wizard_sheet.h"

CWizFinishPage::CWizFinishPage(Host& host) : CWizPage(host, kFinishPage, "Trace Wizard: Finish") {}

void CWizFinishPage::OnSetActive() {
  Wizard().SetWizardButtons(PSWIZB_BACK | PSWIZB_FINISH);
}

// Somebody who came here has selected an application of each machine.
int CWizFinishPage::OnWizardBack() {
  CTraceWizardSheet& wizard = Wizard();
  WizMachines& machines = wizard.m_machines;
  if (machines.empty()) return kWizardStay;
  const auto machine = wizard.IsIdentical() ? machines.begin() : std::prev(machines.end());
  WizApps& apps = machine->second.m_apps;
  auto app = apps.end();
  while (app != apps.begin() && !(--app)->second.m_bSelected) {
  }
  wizard.ApplicationPage().m_itMachine.Set(machines, machine);
  wizard.TracesPage().m_itApp.Set(apps, app);
  const bool found = app != apps.end() && app->second.m_bSelected;
  return found ? CWizPage::OnWizardBack() : kApplicationPage;
}

// A program that must end, while a box of a window is up, opens nothing more.
int CWizFinishPage::OnWizardFinish() {
  const CWaitCursor wait(GetHost());
  CTraceWizardSheet& wizard = Wizard();
  for (auto& [name, machine] : wizard.m_machines)
    if (!g_quickClose) Configure(name, machine);
  if (!g_quickClose && !wizard.m_machines.empty()) wizard.Program().OpenLocalMonitor();
  return CWizPage::OnWizardFinish();
}

// Kept: a question of a window that is reused comes again until it is answered with Yes or No.
// Safe: the user can answer it, and a quick close ends it.
CConfigDoc* CWizFinishPage::FindOrCreateConfigDoc(const std::string& machine) {
  CMultiDocTemplate& configurations = *Wizard().Program().ConfigTemplate();
  if (CConfigDoc* const open = FindConfigWindow(configurations, machine)) {
    open->DeleteContents();
    return open;
  }
  std::string why;
  CConfigDoc* const made = OpenConfigWindow(configurations, machine, &why);
  if (made)
    NoteUsedMachine(machine);
  else if (!why.empty())
    Wizard().NoteConnection(machine, why);
  return made;
}

// The wizard's handles are given back one by one: with as many again a machine would refuse the
// last ones. Behind the first refusal it would be asked, and say the same, for each.
void CWizFinishPage::Configure(const std::string& name, WizMachine& machine) {
  CConfigDoc* const document = FindOrCreateConfigDoc(name);
  if (!document) return;
  for (auto& [appName, entry] : machine.m_apps) {
    if (!entry.m_bSelected || !entry.m_app) continue;
    if (g_quickClose) return;
    trace_App_i* const app = document->AddApplication(appName);
    if (!app) break;
    document->NoteSubmit(*app, ConfigureApp(entry, *app));
    entry.m_app = nullptr;
  }
  if (!machine.m_strConfigFile.empty()) document->SetModifiedFlag(false);
}
