#include "config/document/config_doc.h"

#include <algorithm>
#include <utility>

#include "base/text.h"
#include "config/document/app_names.h"
#include "config/machine_dialog.h"
#include "config/tcf/config_texts.h"
#include "config/tcf/tcf_apply.h"
#include "config/tcf/tcf_file.h"
#include "config/tcf/tcf_write.h"
#include "config/used_machines.h"
#include "docview/commands/command_ids.h"
#include "docview/doc_template.h"
#include "docview/win_app.h"
#include "quor/client/trace_thread.h"
#include "settings/globals.h"

namespace {

constexpr char kTitle[] = "Configuration on ";

bool HasActiveTraces(const trace_App_i& app) {
  for (const trace_Component_t& component : app.GetTraceMap())
    for (const trace_Category_t& category : component.categories)
      if (app.GetSettings(category.traceId) != 0) return true;
  return false;
}

}  // namespace

CConfigDoc::CConfigDoc(Host& host, ConfigClient client)
    : CDocument(host), m_client(std::move(client)), m_pAppList(trace_AppList_i::Create()) {
  MapCommand(
      ID_EDIT_CLEAR_ALL,
      [this] {
        if (SaveModified()) OnNewDocument();
      },
      [this](CCmdUI& ui) { ui.Enable(!m_pAppList->m_apps.empty()); });
  MapCommand(ID_FILE_SAVE, [this] { DoFileSave(); });
  MapCommand(ID_FILE_SAVE_AS, [this] { DoSave(nullptr, true); });
}

void CConfigDoc::ShowError(const char* text) {
  GetHost().MessageBox({text, BoxIcon::None, BoxButtons::Ok});
}

bool CConfigDoc::Connect(const std::string& machine) {
  {
    const CWaitCursor wait(GetHost());
    m_pConfig = m_client.connect(machine, &m_whyNotConnected);
  }
  if (!m_pConfig) ShowError(ConfigTexts::kNoConnection);
  return m_pConfig != nullptr;
}

bool CConfigDoc::ConnectToMachine(const QuorStr::String_t& machine) {
  if (!Connect(_UTF2MBS(machine))) {
    DeleteContents();
    return false;
  }
  SetPathName(kTitle + machine, false);
  return true;
}

QuorStr::String_t CConfigDoc::GetMachineName() const {
  return m_pConfig ? m_pConfig->GetHostName() : std::string();
}

void CConfigDoc::SetPathName(const std::string& path, bool addToRecent) {
  CDocument::SetPathName(path, addToRecent);
  SetTitle(kTitle + GetMachineName());
}

trace_App_i* CConfigDoc::AddApplication(const std::string& name) {
  trace_App_i* const added = TryAddApplication(name);
  if (!added) ShowError(ConfigTexts::kNoConnection);
  return added;
}

trace_App_i* CConfigDoc::TryAddApplication(const std::string& name) {
  QuorPtr<trace_App_i> app;
  {
    const CWaitCursor wait(GetHost());
    // The sheet of the name before may have waited in vain.
    const bool silent = m_pConfig && m_pConfig->IsSilent();
    if (!silent) app = m_client.open(GetMachineName(), name);
  }
  if (!app) return nullptr;
  m_mayBeOn.erase(name);
  m_notInForce.erase(name);
  trace_App_i* const added = m_pAppList->m_apps.emplace_back(std::move(app)).Get();
  SetModifiedFlag(true);
  UpdateAllViews(nullptr, kHintApplications);
  return added;
}

// Reads the application anew: traces that it has gained since are on, too. A machine that was
// waited for in vain is not asked again: each application and each window would wait as long.
bool CConfigDoc::TurnOff(trace_App_i& app) {
  if (m_pConfig && m_pConfig->IsSilent()) return false;
  if (!app.Refresh() && !IsLive()) return false;
  app.SetAllTraces(0);
  return app.Submit();
}

// False: the user wants to keep the application.
bool CConfigDoc::MayRemove(trace_App_i& app) {
  if (!HasActiveTraces(app)) return true;
  MessageBoxRequest question;
  question.text = "Some traces are still active in " + _UTF2MBS(app.GetAppName()) +
                  ".  Do you want to turn them off?";
  question.icon = BoxIcon::Question;
  question.buttons = BoxButtons::YesNoCancel;
  const BoxAnswer answer = GetHost().MessageBox(question);
  if (answer == BoxAnswer::Yes) {
    if (!TurnOff(app)) m_mayBeOn.insert(app.GetAppName());
    m_notInForce.erase(app.GetAppName());
  }
  return answer != BoxAnswer::Cancel;
}

bool CConfigDoc::RemoveApplication(trace_App_i* app) {
  const CWaitCursor wait(GetHost());
  auto& apps = m_pAppList->m_apps;
  const auto place = [&] { return std::find(apps.begin(), apps.end(), app); };
  if (place() == apps.end()) return false;
  const QuorPtr<trace_App_i> kept = app;
  if (app && !MayRemove(*app)) return false;
  // The list may have changed while the question was up.
  if (const auto found = place(); found != apps.end()) apps.erase(found);
  SetModifiedFlag(true);
  UpdateAllViews(nullptr, kHintApplications);
  return true;
}

void CConfigDoc::NoteSubmit(const trace_App_i& app, bool taken) {
  if (taken)
    m_notInForce.erase(app.GetAppName());
  else
    m_notInForce.insert(app.GetAppName());
}

// The window that would tell it is gone.
void CConfigDoc::TellWhatMayBeOn() {
  CWinApp* const program = GetDocTemplate() ? GetDocTemplate()->App() : nullptr;
  if (m_mayBeOn.empty() || !program || !Views().empty()) return;
  program->ShowNotice("Traces of " + AppNames(m_mayBeOn) + " on " + _UTF2MBS(GetMachineName()) +
                      " may still be on.");
}

void CConfigDoc::DeleteContents() {
  auto& apps = m_pAppList->m_apps;
  m_mayBeOn.clear();
  // Kept: a question that is cancelled comes again. Safe: each is a box of its own under which
  // timers go on, and a program that must end makes a quick close of it, also while a box is up.
  while (!g_quickClose && !apps.empty()) RemoveApplication(apps.front().Get());
  apps.clear();
  m_notInForce.clear();
  TellWhatMayBeOn();
  CDocument::DeleteContents();
  UpdateAllViews(nullptr, kHintApplications);
}

bool CConfigDoc::SaveModified() {
  if (!g_quickClose) return CDocument::SaveModified();
  const CWaitCursor wait(GetHost());
  for (const QuorPtr<trace_App_i>& app : m_pAppList->m_apps) {
    if (!TurnOff(*app) && !IsLive()) break;
  }
  return true;
}

bool CConfigDoc::ConnectForOpen() {
  std::string machine = _trc_GetHostName();
  if (!g_bWizardLocalConfig) {
    CMachineDlg question(GetHost(), "What machine do you want to configure?", "configuration");
    if (question.DoModal() != CDialog::kIdOk) return false;
    machine = question.m_strMachine;
  }
  if (!Connect(_UTF2MBS(machine))) return false;
  NoteUsedMachine(machine);
  return true;
}

bool CConfigDoc::OnOpenDocument(const std::string& path) {
  std::string why;
  std::ifstream in = OpenTcf(path, &why);
  if (!in.is_open()) {
    ShowError(ConfigTexts::kNotOpened);
    return Refuse({why});
  }
  DeleteContents();
  SetModifiedFlag(true);
  if (!m_pConfig && !ConnectForOpen()) return Refuse({m_whyNotConnected, true});
  if (!ReadFile(in)) {
    DeleteContents();
    return false;
  }
  SetModifiedFlag(false);
  return true;
}

bool CConfigDoc::ReadFile(std::istream& in) {
  TcfApplier applier(
      *m_pConfig,
      [this](const std::string& app) {
        return QuorPtr<trace_App_i>(m_client.open(GetMachineName(), app));
      },
      m_pAppList->m_apps);
  TcfEnd end;
  TcfFault fault;
  {
    const CWaitCursor wait(GetHost());
    end = ReadTcf(in, applier, &fault);
  }
  m_notInForce = applier.NotTaken();
  if (end == TcfEnd::Whole) return true;
  // Kept: what stands in front of a bad line is in force on the machine, although the document is
  // emptied. Safe: the document asks about traces that are on.
  const bool isBad = end == TcfEnd::BadLine;
  ShowError(isBad ? ConfigTexts::kInvalid : ConfigTexts::kNoConnection);
  return Refuse({isBad ? "line " + GroupDigits(fault.line) + ": " + fault.why : "", !isBad});
}

// Kept: the file is emptied first, and what a failed save has written stays. Safe: a save says that
// it failed, and the document stays modified.
bool CConfigDoc::OnSaveDocument(const std::string& path) {
  std::ofstream out = CreateTcf(path);
  if (!out.is_open()) {
    ShowError(ConfigTexts::kNotOpened);
    return false;
  }
  TcfWritten written;
  {
    const CWaitCursor wait(GetHost());
    written = WriteTcf(out, m_pAppList->m_apps);
  }
  if (written == TcfWritten::Whole) {
    SetModifiedFlag(false);
    return true;
  }
  out.close();  // else the file may still grow behind the box
  ShowError(WordsOf(written));
  return false;
}
