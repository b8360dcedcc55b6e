#include "wizard/network_page.h"

#include "config/tcf/config_texts.h"
#include "quor/client/trace_thread.h"
#include "settings/registry.h"
#include "wizard/tables/machine_apps.h"
#include "wizard/wizard_sheet.h"

namespace {
constexpr char kRegNetworkMode[] = "Network Mode";
}  // namespace

CWizNetworkPage::CWizNetworkPage(Host& host)
    : CWizPage(host, kNetworkPage, "Trace Wizard: Networking"),
      m_nNetworkMode(NtRegGet(HKEY_CURRENT_USER, kRegWizard, kRegNetworkMode, 0U) == 0
                         ? kLocal
                         : kLocalAndRemote) {}

void CWizNetworkPage::OnSetActive() {
  Wizard().SetWizardButtons(PSWIZB_BACK | PSWIZB_NEXT);
}

int CWizNetworkPage::OnWizardNext() {
  if (!UpdateData(true)) return kWizardStay;
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, kRegNetworkMode, static_cast<unsigned>(m_nNetworkMode));
  if (m_nNetworkMode != kLocal) return kMachinesPage;
  return EnterLocalMachine() ? kApplicationPage : kWizardStay;
}

bool CWizNetworkPage::EnterLocalMachine() {
  CTraceWizardSheet& wizard = Wizard();
  const CWaitCursor wait(GetHost());
  std::string why;
  WizMachine local{wizard.Program().Client().connect("localhost", &why), {}, {}};
  const bool answers = local.m_pConfig && EnterAppList(local, &why);
  wizard.NoteConnection("localhost", why);
  if (!answers) {
    Say(ConfigTexts::kNoLocalConnection);
    return false;
  }
  wizard.m_machines.clear();
  const auto machine = wizard.m_machines.emplace(_trc_GetHostName(), std::move(local)).first;
  wizard.MergeOpenConfiguration(machine);
  wizard.ApplicationPage().m_itMachine.Set(wizard.m_machines, wizard.m_machines.begin());
  return true;
}
