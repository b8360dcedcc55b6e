#include "wizard/application_page.h"

#include <filesystem>
#include <iterator>
#include <system_error>
#include <utility>
#include <vector>

#include "base/text.h"
#include "config/tcf/config_texts.h"
#include "wizard/page_work.h"
#include "wizard/tables/load_tcf.h"
#include "wizard/wizard_sheet.h"

namespace {

// A dialog makes the folder of the file the current one, unless the program must not enter it.
bool IsInCurrentFolder(const std::filesystem::path& file) {
  std::error_code failed;
  return !file.has_parent_path() || std::filesystem::equivalent(file.parent_path(), ".", failed);
}

}  // namespace

CWizApplicationPage::CWizApplicationPage(Host& host)
    : CWizPage(host, kApplicationPage, "Trace Wizard: Applications") {}

WizMachine* CWizApplicationPage::Machine() const {
  WizMachines& machines = Wizard().m_machines;
  const auto at = m_itMachine.In(machines);
  return at == machines.end() ? nullptr : &at->second;
}

void CWizApplicationPage::OnSetActive() {
  CTraceWizardSheet& wizard = Wizard();
  const auto at = m_itMachine.In(wizard.m_machines);
  if (at != wizard.m_machines.end() && !wizard.IsIdentical())
    wizard.SetTitle("Trace Wizard: Applications on " + at->first);
  FillList();
}

void CWizApplicationPage::FillList() {
  if (m_list) {
    m_list->SetRedraw(false);
    m_list->ResetContent();
    if (WizMachine* const machine = Machine()) {
      for (const auto& [name, entry] : machine->m_apps) m_list->AddString(_UTF2MBS(name));
      WizApps& apps = machine->m_apps;
      if (NextSelected(apps, apps.begin()) != apps.end()) ShowSelection(apps);
    }
    m_list->SetRedraw(true);
  }
  SetButtons();
}

void CWizApplicationPage::SetButtons() {
  const bool any = m_list && m_list->SelectedCount() > 0;
  Wizard().SetWizardButtons(any ? PSWIZB_BACK | PSWIZB_NEXT : PSWIZB_BACK);
}

void CWizApplicationPage::TakeSelection(WizApps& apps) {
  for (auto& [name, entry] : apps) entry.m_bSelected = false;
  for (int item = 0; m_list && item < m_list->Count(); ++item) {
    const auto entry =
        m_list->IsSelected(item) ? apps.find(_MBS2UTF(m_list->Text(item))) : apps.end();
    if (entry != apps.end()) entry->second.m_bSelected = true;
  }
}

void CWizApplicationPage::ShowSelection(WizApps& apps) {
  if (!m_list) return;
  std::vector<int> selected;
  for (int item = 0; item < m_list->Count(); ++item) {
    const auto entry = apps.find(_MBS2UTF(m_list->Text(item)));
    if (entry != apps.end() && entry->second.m_bSelected) selected.push_back(item);
  }
  m_list->SelectOnly(std::move(selected));
}

int CWizApplicationPage::OnWizardBack() {
  CTraceWizardSheet& wizard = Wizard();
  if (!wizard.IsRemote()) return kNetworkPage;
  WizMachines& machines = wizard.m_machines;
  auto at = m_itMachine.In(machines);
  if (wizard.IsIdentical() || at == machines.begin() || at == machines.end()) return kMachinesPage;
  m_itMachine.Set(machines, --at);
  WizApps& apps = at->second.m_apps;
  if (apps.empty()) return kApplicationPage;  // there is none whose traces could be shown
  // Kept: the last application, selected or not. Safe: the page of traces works on the table alone,
  // and also shows an application that has none there.
  wizard.TracesPage().m_itApp.Set(apps, std::prev(apps.end()));
  return kTracesPage;
}

int CWizApplicationPage::OnWizardNext() {
  WizMachine* const machine = Machine();
  if (!machine || !UpdateData(true)) return kWizardStay;
  WizApps& apps = machine->m_apps;
  bool all = false;
  {
    const CWaitCursor wait(GetHost());
    TakeSelection(apps);
    SelectedReading reading(*machine, Wizard().Program().Client().open);
    ReadingWork work(reading);
    if (!RunLongWork(GetHost(), nullptr, {"Tessera", "Reading applications..."}, work))
      return kWizardStay;
    all = reading.All();
  }
  const auto first = NextSelected(apps, apps.begin());
  Wizard().TracesPage().m_itApp.Set(apps, first);
  if (all && first != apps.end()) return CWizPage::OnWizardNext();
  // After a load that failed the list may show names that are in the table no longer.
  ShowSelection(apps);
  SetButtons();
  if (!all) Say(ConfigTexts::kNoConnection);
  return kWizardStay;
}

void CWizApplicationPage::OnLoad() {
  WizMachine* const machine = Machine();
  if (!machine) return;
  FileDialogRequest request;
  request.title = "Open";
  request.defaultExtension = ".tcf";
  request.filters = {{"Trace Config Files (*.tcf)", "*.tcf"}};
  const auto answer = GetHost().RunFileDialog(request);
  if (!answer) return;
  // Kept: the name without its folder. Safe: the dialog made its folder the current one, or no file
  // is read: another folder may have a file of that name.
  const std::filesystem::path file = answer->path;
  const WizLoad loaded =
      IsInCurrentFolder(file) ? LoadTcf(file.filename().string(), *machine) : WizLoad::NotOpened;
  // Kept: after a bad line the list shows the former names, while the table has what the file gave
  // so far. Safe: Next passes over names that the table does not have.
  if (loaded == WizLoad::Loaded)
    FillList();
  else
    Say(WordsOf(loaded));
}

void CWizApplicationPage::OnListBoxSelection() {
  SetButtons();
}

// Kept: the page stays, and only the work on the table is done. Safe: Next does it again.
void CWizApplicationPage::OnListBoxDoubleClick() {
  OnWizardNext();
}
