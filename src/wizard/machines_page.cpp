#include "wizard/machines_page.h"

#include "base/text.h"
#include "config/document/config_window.h"
#include "config/machine_dialog.h"
#include "config/tcf/config_texts.h"
#include "settings/registry.h"
#include "wizard/tables/machine_apps.h"
#include "wizard/wizard_sheet.h"

namespace {
constexpr char kRegIdentical[] = "Identical Machines";
}  // namespace

CWizMachinesPage::CWizMachinesPage(Host& host)
    : CWizPage(host, kMachinesPage, "Trace Wizard: Machines"),
      m_bIdentical(NtRegGet(HKEY_CURRENT_USER, kRegWizard, kRegIdentical, 0U) != 0) {}

void CWizMachinesPage::OnSetActive() {
  m_mayDelete = false;  // nothing is selected, the first time or later
  if (m_list) {
    m_list->ResetContent();
    for (const auto& [name, machine] : Wizard().m_machines) m_list->AddString(name);
  }
  SetButtons();
}

void CWizMachinesPage::SetButtons() {
  const bool any = m_list && m_list->Count() > 0;
  Wizard().SetWizardButtons(any ? PSWIZB_BACK | PSWIZB_NEXT : PSWIZB_BACK);
}

// What the user has changed in other controls stays.
void CWizMachinesPage::SetMayDelete(bool on) {
  UpdateData(true);
  m_mayDelete = on;
  UpdateData(false);
}

void CWizMachinesPage::OnListBoxSelection() {
  SetMayDelete(m_list && m_list->CurSel() >= 0);
}

bool CWizMachinesPage::OnListBoxKey(ListBoxKey key) {
  if (key != ListBoxKey::Delete) return false;
  if (m_mayDelete) OnDelete();
  return true;
}

bool CWizMachinesPage::IsListed(const std::string& machine) const {
  for (int item = m_list->Count() - 1; item >= 0; --item)
    if (CompareIgnoringCase(m_list->Text(item), machine) == 0) return true;
  return false;
}

QuorPtr<trace_Config_i> CWizMachinesPage::ConnectWith(const std::string& machine,
                                                      std::string* why) {
  const WizardProgram& program = Wizard().Program();
  if (const CConfigDoc* const open = FindConfigWindow(*program.ConfigTemplate(), machine))
    return open->GetConfig();
  return program.Client().connect(machine, why);
}

// The connection of an open window, or one that has just been made, may have lost its machine.
WizMachine CWizMachinesPage::Reach(const std::string& name) {
  const CWaitCursor wait(GetHost());
  std::string why;
  WizMachine machine{ConnectWith(name, &why), {}, {}};
  if (machine.m_pConfig && !EnterAppList(machine, &why)) machine.m_pConfig = nullptr;
  Wizard().NoteConnection(name, why);
  return machine;
}

void CWizMachinesPage::OnAdd() {
  if (!m_list) return;
  CMachineDlg question(GetHost(), "What machine do you want to configure?", "configuration");
  if (question.DoModal() != CDialog::kIdOk) return;
  const std::string& name = question.m_strMachine;
  if (IsListed(name)) return Say(ConfigTexts::kDuplicateMachine, BoxIcon::Warning);
  const WizMachine machine = Reach(name);
  if (!machine.m_pConfig) return Say(ConfigTexts::kNoConnectionOn + name);
  Wizard().m_machines[name] = machine;
  m_list->SetCurSel(m_list->AddString(name));  // the one that Delete would take
  SetButtons();
  SetMayDelete(true);
}

void CWizMachinesPage::OnDelete() {
  const int item = m_list ? m_list->CurSel() : -1;
  if (item < 0) return;
  Wizard().m_machines.erase(m_list->Text(item));
  m_list->DeleteString(item);
  SetButtons();
  SetMayDelete(false);
}

// Machines that were configured the same have another's connection. Each that is worked on gets its
// own again; of machines that are the same this is the first. The name of one that cannot be
// reached.
std::string CWizMachinesPage::RestoreConnections() {
  for (auto& [name, machine] : Wizard().m_machines) {
    if (!IsConnectedWith(machine, name)) {
      const QuorPtr<trace_Config_i> own = Reach(name).m_pConfig;
      if (!own) return name;
      TakeOwnConnection(machine, own);
    }
    if (m_bIdentical) break;
  }
  return {};
}

int CWizMachinesPage::OnWizardNext() {
  CTraceWizardSheet& wizard = Wizard();
  if (!UpdateData(true) || wizard.m_machines.empty()) return kWizardStay;
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, kRegIdentical, m_bIdentical != 0 ? 1U : 0U);
  if (const std::string away = RestoreConnections(); !away.empty()) {
    Say(ConfigTexts::kNoConnectionOn + away);
    return kWizardStay;
  }
  const CWaitCursor wait(GetHost());
  WizMachines& machines = wizard.m_machines;
  for (auto machine = machines.begin(); machine != machines.end(); ++machine)
    wizard.MergeOpenConfiguration(machine);
  if (m_bIdentical) MakeNamesIdentical(machines);
  wizard.ApplicationPage().m_itMachine.Set(machines, machines.begin());
  return CWizPage::OnWizardNext();
}
