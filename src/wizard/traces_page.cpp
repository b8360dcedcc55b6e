#include "wizard/traces_page.h"

#include <iterator>

#include "base/text.h"
#include "config/traces/kept_note.h"
#include "wizard/tables/app_traces.h"
#include "wizard/wizard_sheet.h"
#include "wizard/wizard_texts.h"

CWizTracesPage::CWizTracesPage(Host& host)
    : CWizPage(host, kTracesPage, "Trace Wizard: Traces"), m_traces(host) {}

void CWizTracesPage::OnSetActive() {
  CTraceWizardSheet& wizard = Wizard();
  wizard.SetWizardButtons(PSWIZB_BACK | PSWIZB_NEXT);
  TraceItems items;
  bool read = false;
  m_note.clear();
  const auto at = wizard.ApplicationPage().m_itMachine.In(wizard.m_machines);
  if (at != wizard.m_machines.end()) {
    WizApps& apps = at->second.m_apps;
    if (const auto app = m_itApp.In(apps); app != apps.end()) {
      const bool named = wizard.IsRemote() && !wizard.IsIdentical();
      wizard.SetTitle(Caption() + " for " + _UTF2MBS(app->first) +
                      (named ? " on " + at->first : std::string()));
      for (const auto& [name, trace] : app->second.m_traces)
        items.push_back(new CTraceItem(name.first, name.second, trace.m_nId, trace.m_nSettings));
      read = static_cast<bool>(app->second.m_app);
      if (read) m_note = KeptNote(*app->second.m_app);
    }
  }
  m_traces.Fill(std::move(items), read ? CTracesList::kNoTraces : WizardTexts::kNotRead);
  UpdateData(false);
}

void CWizTracesPage::TakeRows(WizTraces& traces) const {
  for (const QuorPtr<CTraceItem>& row : m_traces.Items()) {
    const auto trace = traces.find({row->m_component, row->m_category});
    if (trace != traces.end()) trace->second.m_nSettings = row->m_settings;
  }
}

int CWizTracesPage::Reload(WizApps& apps, WizApps::iterator app) {
  m_itApp.Set(apps, app);
  OnSetActive();
  return kWizardStay;
}

int CWizTracesPage::OnWizardNext() {
  CTraceWizardSheet& wizard = Wizard();
  WizMachines& machines = wizard.m_machines;
  const auto machine = wizard.ApplicationPage().m_itMachine.In(machines);
  if (machine == machines.end()) return kWizardStay;
  WizApps& apps = machine->second.m_apps;
  const auto app = m_itApp.In(apps);
  if (app == apps.end()) return kWizardStay;
  TakeRows(app->second.m_traces);
  if (wizard.IsIdentical()) CopyToOthers(machines, machine);
  const auto next = NextSelected(apps, std::next(app));
  if (next != apps.end()) return Reload(apps, next);
  if (!wizard.IsRemote() || wizard.IsIdentical()) return kFinishPage;
  const auto nextMachine = std::next(machine);
  if (nextMachine == machines.end()) return kFinishPage;
  wizard.ApplicationPage().m_itMachine.Set(machines, nextMachine);
  return kApplicationPage;
}

// Kept: what was changed on the page is dropped. Safe: the list shows so when it comes again.
int CWizTracesPage::OnWizardBack() {
  WizMachine* const machine = Wizard().ApplicationPage().Machine();
  if (!machine) return kApplicationPage;
  WizApps& apps = machine->m_apps;
  for (auto app = m_itApp.In(apps); app != apps.end() && app != apps.begin();)
    if ((--app)->second.m_bSelected) return Reload(apps, app);
  return kApplicationPage;
}
