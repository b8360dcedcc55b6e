#include "wizard/finish_page.h"

#include <iterator>

#include "base/text.h"
#include "config/document/config_window.h"
#include "config/tcf/config_texts.h"
#include "config/used_machines.h"
#include "settings/globals.h"
#include "wizard/page_work.h"
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

// A program that must end, while a box of a window is up, opens nothing more. Cancelled, Finish
// ends where it is: what is in force stays, and the windows show it.
int CWizFinishPage::OnWizardFinish() {
  const CWaitCursor wait(GetHost());
  CTraceWizardSheet& wizard = Wizard();
  m_left.clear();
  m_cancelled = false;
  std::map<std::string, ChosenApps> chosen = TakeChosen(wizard.m_machines);
  for (const auto& [name, machine] : wizard.m_machines) {
    if (g_quickClose) break;
    if (m_cancelled)
      m_left.push_back({name, "cancelled"});
    else
      Configure(name, machine.m_strConfigFile, chosen[name]);
  }
  if (g_quickClose) return CWizPage::OnWizardFinish();
  if (!wizard.m_machines.empty()) wizard.Program().OpenLocalMonitor();
  wizard.Note(m_left.empty() ? "" : WhatIsLeft(m_left, wizard.m_machines.size(), m_cancelled));
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
    m_left.push_back({machine, why});
  return made;
}

void CWizFinishPage::Configure(const std::string& machine, const std::string& file,
                               ChosenApps& apps) {
  CConfigDoc* const document = FindOrCreateConfigDoc(machine);
  if (!document || g_quickClose) return;
  ConfiguringWork work(*document, apps);
  m_cancelled = !RunLongWork(GetHost(), document, {"Tessera", "Configuring applications..."}, work);
  if (g_quickClose) return;
  if (work.Done() < apps.size()) {
    const std::string done =
        GroupDigits(work.Done()) + " of " + GroupDigits(apps.size()) + " applications";
    m_left.push_back({machine, (m_cancelled ? "cancelled after " : "it has taken ") + done});
    if (!m_cancelled) Say(ConfigTexts::kNoConnection);
  }
  if (!file.empty()) document->SetModifiedFlag(false);
}
