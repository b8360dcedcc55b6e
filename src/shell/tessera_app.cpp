#include "shell/tessera_app.h"

#include <csignal>

#include "base/text.h"
#include "config/document/config_window.h"
#include "config/machine_dialog.h"
#include "config/used_machines.h"
#include "config/view/config_view.h"
#include "documents/trace_file_doc.h"
#include "docview/commands/command_ids.h"
#include "listview/colours/active_colours.h"
#include "listview/columns/options_dialog.h"
#include "listview/columns/time_columns.h"
#include "listview/rows/trace_view.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "shell/child_frame.h"
#include "shell/colours/colour_rules_dialog.h"
#include "shell/config_frame.h"
#include "shell/failed_open.h"
#include "shell/menus/resource_ids.h"
#include "shell/realtime_frame.h"
#include "wizard/wizard_sheet.h"

namespace {

constexpr char kTraceFileString[] =
    "\n\nTrace File\nTrace Files (*.trc)\n.trc\nTraceFile\nTrace File";
constexpr char kMonitorString[] = "\nTraceRealtimeDoc\nTrace File\nTrace Files (*.trc)\n.trc\n\n";
constexpr char kConfigString[] =
    "\n\nTrace Config\nTrace Config Files (*.tcf)\n.tcf\nTraceConfigFile\nTrace Config File";
// Kept: the second word of this prompt alone is "to". Opening a file asks with "do".
constexpr char kConfigPrompt[] = "What machine to you want to configure?";
constexpr char kMonitorPrompt[] = "What machine do you want to monitor for traces?";

std::string RecentFileName(std::size_t index) {
  return "File" + std::to_string(index + 1);
}

void NotifyOptionsChanged(const CMultiDocTemplate& docTemplate) {
  for (const auto& document : docTemplate.Documents())
    document->UpdateAllViews(nullptr, kHintOptions);
}

}  // namespace

const char CTesseraApp::kVersionLine[] = "Tessera Version " TESSERA_VERSION;

CTesseraApp::CTesseraApp(Host& host, ShellFaces& faces) : CWinApp(host), m_faces(faces) {
  MapCommands();
}

// Documents are destroyed first, and each stops its load thread; then the window that those threads
// use.
CTesseraApp::~CTesseraApp() {
  CTesseraApp::CloseAllDocuments();
  GetHost().SetMainWindow(nullptr);
  m_frame.reset();
  MainFrame() = nullptr;
}

void CTesseraApp::MapCommands() {
  MapCommand(ID_FILE_WIZARD, [this] { OnWizard(); });
  MapCommand(ID_FILE_NEWMONITOR, [this] { OnNewMonitor(); });
  MapCommand(ID_FILE_NEWCONFIG, [this] { OnNewConfig(); });
  MapCommand(ID_VIEW_OPTIONS, [this] { OnOptions(); });
  MapCommand(ID_VIEW_COLOURS, [this] { OnColours(); });
  MapCommand(ID_COLUMNS_CHANGED, [this] { OnTraceOptions(); });
  MapTimeColumns();
  MapCommand(ID_APP_ABOUT, [this] { m_faces.ShowAbout(kVersionLine); });
  MapCommand(ID_APP_EXIT, [this] { m_frame->OnClose(); });
  MapCommand(ID_FILE_PRINT_SETUP, [this] { m_faces.ShowPrintSetup(); });
  for (const unsigned print : {ID_FILE_PRINT, ID_FILE_PRINT_PREVIEW})
    MapUpdate(print, [](CCmdUI& ui) { ui.Enable(false); });
  MapCommand(
      ID_WINDOW_NEW, [this] { OnNewWindow(); },
      [this](CCmdUI& ui) {
        const CMDIChildWnd* child = m_frame->MDIGetActive();
        const CDocument* document = child ? child->GetActiveDocument() : nullptr;
        ui.Enable(document && document->GetDocTemplate());
      });
}

// In all windows, as the columns of the options.
void CTesseraApp::MapTimeColumns() {
  const std::pair<unsigned, Column> columns[] = {{ID_VIEW_TIMEDELTA, Column::Delta},
                                                 {ID_VIEW_TIMESINCE, Column::Since},
                                                 {ID_VIEW_TIMEWALL, Column::WallTime}};
  for (const auto& [id, column] : columns)
    MapCommand(
        id,
        [this, column = column] {
          ShowTimeColumn(column, !IsTimeColumnShown(column));
          OnTraceOptions();
        },
        [column = column](CCmdUI& ui) { ui.SetCheck(IsTimeColumnShown(column)); });
}

bool CTesseraApp::InitInstance(const std::vector<std::string>& arguments) {
  std::signal(SIGPIPE, SIG_IGN);  // a closed connection must be a write error, not the end
  LoadRecentFiles();
  MakeTemplates();
  if (!MakeFrame()) return false;
  ReadActiveColumns();
  ReadActiveColours();
  CCommandLineInfo info = ParseCommandLine(arguments);
  if (info.command == CCommandLineInfo::FileNew) info.command = CCommandLineInfo::FileNothing;
  if (!ProcessShellCommand(info)) return false;
  m_frame->ShowWindow();
  if (info.command == CCommandLineInfo::FileNothing) PostWizard();
  return true;
}

void CTesseraApp::MakeTemplates() {
  CMultiDocTemplate::Makers files;
  files.document = [this] { return std::make_unique<CTraceFileDoc>(GetHost(), m_loads); };
  files.frame = [this] { return std::make_unique<CTraceChildFrame>(*m_frame); };
  m_fileTemplate = AddDocTemplate(MakeTraceTemplate(IDR_TRACEFILE, kTraceFileString, files));
  CMultiDocTemplate::Makers monitors;
  monitors.document = [this] {
    return std::make_unique<CTraceRealtimeDoc>(GetHost(), m_connectMonitor);
  };
  monitors.frame = [this] { return std::make_unique<CTraceRealtimeFrame>(*m_frame); };
  m_monitorTemplate = MakeTraceTemplate(IDR_MONITOR, kMonitorString, monitors);
  MakeConfigTemplate();
  m_sourceTemplate = std::make_unique<CSourceTemplate>(
      GetHost(), MainFrame(),
      [this](RichEditOwner& owner) { return m_faces.CreateRichEdit(owner); });
}

std::unique_ptr<CMultiDocTemplate> CTesseraApp::MakeTraceTemplate(
    unsigned resource, const char* docString, CMultiDocTemplate::Makers makers) {
  makers.view = [this](CDocument& document) {
    return std::make_unique<CTraceView>(
        static_cast<CTraceDoc&>(document),
        [this](RowListOwner& owner) { return m_faces.CreateRowList(owner); });
  };
  return std::make_unique<CMultiDocTemplate>(resource, docString, MainFrame(), std::move(makers));
}

void CTesseraApp::MakeConfigTemplate() {
  CMultiDocTemplate::Makers configs;
  configs.document = [this] { return std::make_unique<CConfigDoc>(GetHost(), m_configClient); };
  configs.frame = [this] { return std::make_unique<CConfigFrame>(*m_frame); };
  configs.view = [this](CDocument& document) {
    return std::make_unique<CConfigView>(
        static_cast<CConfigDoc&>(document),
        [this](ListBoxOwner& owner) { return m_faces.CreateConfigPane(owner); });
  };
  m_configTemplate = AddDocTemplate(std::make_unique<CMultiDocTemplate>(
      IDR_CONFIG, kConfigString, MainFrame(), std::move(configs)));
}

bool CTesseraApp::MakeFrame() {
  m_frame = std::make_unique<CMainFrame>(*this);
  if (!m_frame->LoadFrame()) return false;
  MainFrame() = m_frame.get();
  GetHost().SetMainWindow(m_frame.get());
  return true;
}

CDocument* CTesseraApp::OpenDocumentFile(const std::string& path) {
  CDocument* const document = CWinApp::OpenDocumentFile(path);
  if (!document)
    NoteNotOpened(path);
  else if (m_frame)
    m_frame->SetNotice({});
  return document;
}

bool CTesseraApp::IsConfiguration(const std::string& path) const {
  return m_configTemplate && m_configTemplate->Matches(path);
}

std::string CTesseraApp::WhyBadFile(const std::string& path) const {
  return IsConfiguration(path) ? m_configTemplate->LastRefusal().why : WhyUnreadable(path);
}

// A readable trace file that did not open was refused by the user or with a message box. So was any
// configuration; its box does not say which line is bad.
void CTesseraApp::NoteNotOpened(const std::string& path) {
  const std::string why = WhyBadFile(path);
  if (!m_frame || why.empty()) return;
  const std::string text = FailedText({{path, why}}, 1), details = FailedDetails({{path, why}});
  if (IsConfiguration(path))
    ShowInStatusBar(text, details);
  else
    m_frame->SetNotice(text, details);
}

std::string CTesseraApp::TryOpen(const std::string& path) {
  return CWinApp::OpenDocumentFile(path) ? std::string() : WhyNotOpened(path);
}

std::string CTesseraApp::WhyNotOpened(const std::string& path) const {
  std::string why = WhyBadFile(path);
  if (!why.empty()) return why;
  return IsConfiguration(path) ? "not opened" : WhyRefused(path);
}

// For those who look for it: a hidden status bar gives no box.
void CTesseraApp::ShowInStatusBar(const std::string& notice, const std::string& details) {
  if (m_frame->Face()->IsBarShown(ID_VIEW_STATUS_BAR)) m_frame->SetNotice(notice, details);
}

// A window that comes to the front removes a notice, so this waits until the windows have changed.
void CTesseraApp::ShowNotice(const std::string& notice) {
  if (m_frame) m_frame->PostCall([this, notice] { ShowInStatusBar(notice, notice); });
}

void CTesseraApp::LoadRecentFiles() {
  std::vector<std::string> paths;
  for (std::size_t index = 0; index < kRecentFiles; ++index) {
    std::string path = NtRegGet(HKEY_CURRENT_USER, kRegRecentFiles, RecentFileName(index), "");
    if (!path.empty()) paths.push_back(std::move(path));
  }
  SetRecentFiles(std::move(paths));
}

// An entry that became free is stored as empty: the store cannot remove values.
void CTesseraApp::OnRecentFilesChanged() {
  for (std::size_t index = 0; index < kRecentFiles; ++index) {
    const std::string path = index < RecentFiles().size() ? RecentFiles()[index] : "";
    const std::string name = RecentFileName(index);
    if (NtRegGet(HKEY_CURRENT_USER, kRegRecentFiles, name, "") != path)
      NtRegPut(HKEY_CURRENT_USER, kRegRecentFiles, name, path);
  }
  if (m_frame && m_frame->Face()) m_frame->Face()->RecentFilesChanged();
}

// Posted, so that the wizard opens after the window.
void CTesseraApp::PostWizard() {
  if (!m_offerWizard || NtRegGet(HKEY_CURRENT_USER, kRegWizard, "Auto-start", 1U) == 0) return;
  m_frame->PostCall([this] { m_frame->OnCommand(ID_FILE_WIZARD); });
}

// Ctrl+W or another command may open a modal loop before the posted start has come. It comes there,
// and must not open a second window.
void CTesseraApp::OnWizard() {
  if (m_faces.IsModal()) return;
  CTraceWizardSheet(GetHost(), *this).DoModal();
}

void CTesseraApp::OnNewMonitor() {
  CMachineDlg query(GetHost(), kMonitorPrompt);
  if (query.DoModal() == CDialog::kIdOk) OpenMonitor(query.m_strMachine);
}

bool CTesseraApp::OpenMonitor(const std::string& machine) {
  CDocument* const document = m_monitorTemplate->OpenDocumentFile(nullptr, false);
  if (!document) return false;
  auto& monitor = static_cast<CTraceRealtimeDoc&>(*document);
  auto& frame = static_cast<CMDIChildWnd&>(*monitor.Views().front()->GetParentFrame());
  if (!monitor.ConnectToMachine(machine)) {
    frame.Destroy();  // destroys the document too, whose only frame it is
    return false;
  }
  NoteUsedMachine(machine);
  monitor.SetPathName(CTraceRealtimeDoc::TitleFor(machine), false);
  m_monitorTemplate->InitialUpdateFrame(frame, monitor, true);
  return true;
}

void CTesseraApp::OnNewConfig() {
  CMachineDlg query(GetHost(), kConfigPrompt, "configuration");
  if (query.DoModal() == CDialog::kIdOk && !query.m_strMachine.empty())
    OpenConfig(query.m_strMachine);
}

bool CTesseraApp::OpenConfig(const std::string& machine) {
  std::string why;
  if (OpenConfigWindow(*m_configTemplate, machine, &why)) {
    NoteUsedMachine(machine);
    return true;
  }
  const std::string notice = "Cannot configure " + machine + ": " + why;
  if (!why.empty()) ShowInStatusBar(notice, notice);
  return false;
}

void CTesseraApp::OpenLocalMonitor() {
  const std::string hostName = _trc_GetHostName();
  for (const std::string& name : {std::string("localhost"), hostName}) {
    for (const auto& document : m_monitorTemplate->Documents()) {
      const auto& monitor = static_cast<const CTraceRealtimeDoc&>(*document);
      if (CompareIgnoringCase(monitor.Machine(), name) == 0) return;
    }
  }
  OpenMonitor(hostName);
}

// Of the window in front; null: it has none.
CTraceView* CTesseraApp::FrontList() const {
  const auto* const child = dynamic_cast<const CTraceChildFrame*>(m_frame->MDIGetActive());
  return child ? child->ListView() : nullptr;
}

// The dialogs begin with what the user sees, and hold for all windows.
//
// The broadcast is posted, so that it comes after the dialog has closed.
void CTesseraApp::OnOptions() {
  CTraceView* const list = FrontList();
  COptionsDlg dialog(GetHost(), list ? list->Columns().Flags() : g_activeColumns);
  if (dialog.DoModal() != CDialog::kIdOk) return;
  ApplyOptions(dialog);
  m_frame->PostCall([this] { OnTraceOptions(); });
}

void CTesseraApp::OnColours() {
  CTraceView* const list = FrontList();
  std::optional<UsedColours> own;
  if (list && list->Colours().AreOwn()) {
    ViewColours colours = list->Colours().State();
    own = ReadUsedColours();  // rules that this window does not show stay
    own->shown = colours.shown;
    if (colours.shown) own->rules = std::move(colours.rules);
  }
  if (CColourRulesDialog(GetHost(), std::move(own)).DoModal() != CDialog::kIdOk) return;
  m_frame->PostCall([this] { OnTraceOptions(); });
}

// Kept: a monitor gets it once per registered template. Safe: the second time finds every column up
// to date.
void CTesseraApp::OnTraceOptions() {
  for (const auto& docTemplate : Templates()) {
    NotifyOptionsChanged(*docTemplate);
    if (m_monitorTemplate) NotifyOptionsChanged(*m_monitorTemplate);
  }
}

void CTesseraApp::OnNewWindow() {
  CMDIChildWnd* active = m_frame->MDIGetActive();
  CDocument* document = active ? active->GetActiveDocument() : nullptr;
  CMultiDocTemplate* docTemplate = document ? document->GetDocTemplate() : nullptr;
  if (!docTemplate) return;
  if (CMDIChildWnd* frame = docTemplate->CreateNewFrame(*document))
    docTemplate->InitialUpdateFrame(*frame, *document, true);
}

bool CTesseraApp::SaveAllModified() {
  if (m_monitorTemplate && !m_monitorTemplate->SaveAllModified()) return false;
  return CWinApp::SaveAllModified() && (!m_sourceTemplate || m_sourceTemplate->SaveAllModified());
}

void CTesseraApp::CloseAllDocuments() {
  if (m_monitorTemplate) m_monitorTemplate->CloseAllDocuments();
  CWinApp::CloseAllDocuments();
  if (m_sourceTemplate) m_sourceTemplate->CloseAllDocuments();
}
