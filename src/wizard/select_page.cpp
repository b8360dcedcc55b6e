#include "wizard/select_page.h"

#include <utility>

#include "docview/win_app.h"
#include "settings/globals.h"
#include "wizard/wizard_sheet.h"

CWizSelectPage::CWizSelectPage(Host& host) : CWizPage(host, kSelectPage, "Trace Wizard: Mode") {}

void CWizSelectPage::OnSetActive() {
  Wizard().SetWizardButtons(PSWIZB_BACK | PSWIZB_NEXT);
}

int CWizSelectPage::OnWizardNext() {
  if (!UpdateData(true)) return kWizardStay;
  if (m_nTask == kNewSetup) return CWizPage::OnWizardNext();
  const bool opened = m_nTask == kLoadConfiguration ? LoadConfiguration() : LoadTraces();
  if (!opened) return kWizardStay;
  Wizard().EndDialog(CDialog::kIdOk);
  return CWizPage::OnWizardNext();
}

std::optional<std::string> CWizSelectPage::AskFor(const CMultiDocTemplate& kind) const {
  return kind.App()->DoPromptFileName(&kind);
}

bool CWizSelectPage::Open(CMultiDocTemplate& kind, const std::string& path) {
  if (kind.OpenDocumentFile(&path)) return true;
  Wizard().Program().NoteNotOpened(path);
  return false;
}

// The file applies to this machine, and nobody is asked for one.
bool CWizSelectPage::LoadConfiguration() {
  CMultiDocTemplate& configurations = *Wizard().Program().ConfigTemplate();
  const std::optional<std::string> path = AskFor(configurations);
  if (!path) return false;
  const bool before = std::exchange(g_bWizardLocalConfig, true);
  const bool opened = Open(configurations, *path);
  g_bWizardLocalConfig = before;
  if (opened) Wizard().Program().OpenLocalMonitor();
  return opened;
}

bool CWizSelectPage::LoadTraces() {
  CMultiDocTemplate& traces = *Wizard().Program().FileTemplate();
  const std::optional<std::string> path = AskFor(traces);
  return path && Open(traces, *path);
}
