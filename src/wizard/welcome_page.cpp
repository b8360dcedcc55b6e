#include "wizard/welcome_page.h"

#include "settings/registry.h"
#include "wizard/wizard_sheet.h"

namespace {
constexpr char kRegAutoStart[] = "Auto-start";
}  // namespace

CWizWelcomePage::CWizWelcomePage(Host& host)
    : CWizPage(host, kWelcomePage, "Trace Wizard: Welcome"),
      m_bAutoStart(NtRegGet(HKEY_CURRENT_USER, kRegWizard, kRegAutoStart, 1U) != 0) {}

void CWizWelcomePage::OnSetActive() {
  Wizard().SetWizardButtons(PSWIZB_NEXT);
}

void CWizWelcomePage::OnAutoStart() {
  UpdateData(true);
  NtRegPut(HKEY_CURRENT_USER, kRegWizard, kRegAutoStart, m_bAutoStart != 0 ? 1U : 0U);
}
