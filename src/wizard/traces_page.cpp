#include "wizard/traces_page.h"

#include "wizard/wizard_sheet.h"

CWizTracesPage::CWizTracesPage(Host& host)
    : CWizPage(host, kTracesPage, "Trace Wizard: Traces"), m_traces(host) {}

void CWizTracesPage::OnSetActive() {
  Wizard().SetWizardButtons(PSWIZB_BACK | PSWIZB_NEXT);
}

int CWizTracesPage::OnWizardBack() {
  return kWizardInOrder;
}

int CWizTracesPage::OnWizardNext() {
  return kWizardInOrder;
}
