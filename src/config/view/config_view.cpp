#include "config/view/config_view.h"

#include "base/text.h"
#include "config/document/app_names.h"
#include "config/pages/config_sheet.h"
#include "config/view/add_app_dialog.h"
#include "documents/trace_panes.h"
#include "docview/commands/command_ids.h"
#include "docview/frame.h"
#include "settings/globals.h"

namespace {

constexpr unsigned kLookMs = 500;

}  // namespace

CConfigView::CConfigView(CConfigDoc& document, const ConfigPaneMaker& makePane)
    : CView(document), m_document(document), m_pane(makePane(*this)), m_listBox(m_pane->List()) {
  const auto needsCurrent = [this](CCmdUI& ui) { ui.Enable(HasCurrent()); };
  MapCommand(ID_CONFIG_ADD, [this] { OnAddApplication(); });
  MapCommand(
      ID_CONFIG_DELETE, [this] { OnDeleteApplication(); }, needsCurrent);
  MapCommand(
      ID_VIEW_PROPERTIES, [this] { OnProperties(); }, needsCurrent);
}

CConfigView::~CConfigView() {
  if (m_timer) GetHost().KillTimer(m_timer);
}

void CConfigView::OnInitialUpdate() {
  CView::OnInitialUpdate();
  OnUpdate(nullptr, CConfigDoc::kHintApplications, nullptr);
  if (!m_timer) m_timer = GetHost().SetTimer(kLookMs, [this] { ShowConnection(); });
}

void CConfigView::OnUpdate(CView*, unsigned hint, CObject*) {
  if (hint != CConfigDoc::kHintApplications) return;
  m_listBox.SetRedraw(false);
  m_listBox.ResetContent();
  m_bEmpty = true;
  for (const QuorPtr<trace_App_i>& app : m_document.GetApplications()->m_apps) {
    m_listBox.AddString(_UTF2MBS(app->GetAppName()), reinterpret_cast<std::uintptr_t>(app.Get()));
    m_bEmpty = false;
  }
  if (m_bEmpty) AddPlaceholder();
  m_listBox.SetRedraw(true);
}

void CConfigView::OnActivateView(bool activate, CView* activated, CView* deactivated) {
  if (activate) {
    ReportRowCount(GetHost(), -1);
    ReportFiltered(GetHost(), -1);
  }
  CView::OnActivateView(activate, activated, deactivated);
}

bool CConfigView::HasCurrent() const {
  return !m_bEmpty && m_listBox.CurSel() >= 0;
}

trace_App_i* CConfigView::Current() const {
  return HasCurrent() ? reinterpret_cast<trace_App_i*>(m_listBox.Data(m_listBox.CurSel()))
                      : nullptr;
}

void CConfigView::AddPlaceholder() {
  m_listBox.AddString(kPlaceholder);
  m_bEmpty = true;
}

std::set<std::string> CConfigView::NamesToAdd() const {
  const CWaitCursor wait(GetHost());
  const auto& known = m_document.GetConfig()->GetAppList();
  std::set<std::string> names(known.begin(), known.end());
  for (const QuorPtr<trace_App_i>& app : m_document.GetApplications()->m_apps)
    names.erase(app->GetAppName());
  return names;
}

std::string CConfigView::WhyNoNames() const {
  const std::string machine = m_document.GetMachineName();
  if (!m_document.GetConfig()->WasAnswered()) return machine + " does not answer.";
  return m_bEmpty ? "No application that can be traced runs on " + machine + "."
                  : "All applications of " + machine + " are in the list.";
}

// Each application gets its sheet at once, one after the other.
void CConfigView::OnAddApplication() {
  if (!m_document.GetConfig()) return;
  const std::set<std::string> names = NamesToAdd();
  CAddAppDialog dialog(GetHost(), names, names.empty() ? WhyNoNames() : std::string());
  if (dialog.DoModal() != CDialog::kIdOk) return;
  for (const std::string& name : dialog.m_names) {
    // A program that must end does not go on behind its sheet. A machine that is away, or has no
    // room for another handle, would give the same message for each name.
    if (g_quickClose || !Add(name)) return;
  }
}

bool CConfigView::Add(const std::string& name) {
  const trace_App_i* const app = m_document.AddApplication(name);  // the hint fills the list
  if (!app) return false;
  SelectItem(*app);
  OnProperties();
  return true;
}

// Two names may differ in case only: then the text alone finds the wrong item.
void CConfigView::SelectItem(const trace_App_i& app) {
  int item = m_listBox.FindStringExact(_UTF2MBS(app.GetAppName()));
  for (int other = 0; other < m_listBox.Count(); ++other)
    if (m_listBox.Data(other) == reinterpret_cast<std::uintptr_t>(&app)) item = other;
  m_listBox.SetCurSel(item);
}

void CConfigView::OnDeleteApplication() {
  // The hint fills the list, with the placeholder behind the last application.
  if (trace_App_i* const app = Current()) m_document.RemoveApplication(app);
}

void CConfigView::OnProperties() {
  trace_App_i* const app = Current();
  if (!app) return;
  CConfigPropertySheet sheet(GetHost(), m_document, *app);
  sheet.DoModal();
}

void CConfigView::OnListBoxDoubleClick() {
  if (m_bEmpty) {
    OnAddApplication();
  } else {
    OnProperties();
  }
}

bool CConfigView::OnListBoxKey(ListBoxKey key) {
  if (key == ListBoxKey::Enter) {
    OnListBoxDoubleClick();
  } else if (!m_bEmpty) {
    OnDeleteApplication();
  }
  return true;
}

void CConfigView::OnListBoxContextMenu(int screenXPx, int screenYPx) {
  if (auto* const frame = dynamic_cast<CMDIChildWnd*>(GetParentFrame()))
    frame->OnContextMenu(screenXPx, screenYPx);
}

void CConfigView::ShowConnection() {
  const auto& changed = m_document.NotInForce();
  const auto& on = m_document.MayBeOn();
  std::string note;
  const auto add = [&note](const std::string& sentence) {
    note += (note.empty() ? "" : " ") + sentence;
  };
  if (m_document.GetConfig() && !m_document.IsLive())
    add("Not connected to " + m_document.GetMachineName() + ". Trying again.");
  if (!changed.empty()) add("The last changes of " + AppNames(changed) + " are not in force.");
  if (!on.empty()) add("Traces of " + AppNames(on) + " may still be on.");
  m_pane->SetNote(note);
}
