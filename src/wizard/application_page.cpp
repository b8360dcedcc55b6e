#include "wizard/application_page.h"

#include "wizard/wizard_sheet.h"

CWizApplicationPage::CWizApplicationPage(Host& host)
    : CWizPage(host, kApplicationPage, "Trace Wizard: Applications") {}

WizMachine* CWizApplicationPage::Machine() const {
  WizMachines& machines = Wizard().m_machines;
  const auto at = m_itMachine.In(machines);
  return at == machines.end() ? nullptr : &at->second;
}

void CWizApplicationPage::OnSetActive() {
  Wizard().SetWizardButtons(PSWIZB_BACK);
}

int CWizApplicationPage::OnWizardBack() {
  return kWizardInOrder;
}

int CWizApplicationPage::OnWizardNext() {
  return kWizardInOrder;
}

void CWizApplicationPage::OnLoad() {}

void CWizApplicationPage::OnListBoxSelection() {}

void CWizApplicationPage::OnListBoxDoubleClick() {}
