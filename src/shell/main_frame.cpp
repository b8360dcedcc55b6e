#include "shell/main_frame.h"

#include <algorithm>
#include <set>

#include "documents/trace_hint.h"
#include "docview/commands/command_ids.h"
#include "listview/source/locate_wait.h"
#include "settings/globals.h"
#include "settings/registry.h"
#include "shell/child_frame.h"
#include "shell/failed_open.h"
#include "shell/front_texts.h"
#include "shell/menus/resource_ids.h"
#include "shell/sizes/stored_size.h"
#include "shell/tessera_app.h"

namespace {

constexpr char kProgramTitle[] = "Tessera";
constexpr char kTabs[] = "Window Tabs";

bool HasDocument(const CMultiDocTemplate* docTemplate) {
  return docTemplate && !docTemplate->Documents().empty();
}

}  // namespace

CMainFrame::CMainFrame(CTesseraApp& app) : CMDIFrameWnd(app), m_tessera(app) {
  MapBars();
  MapTabs();
  MapPanes();
  MapHelp();
}

// The windows of the children are inside this frame's window: they are destroyed first.
CMainFrame::~CMainFrame() {
  DestroyChildren();
}

bool CMainFrame::LoadFrame() {
  int widthPx = 0, heightPx = 0;
  m_tessera.Faces().ProposedMainSize(widthPx, heightPx);
  ReadWindowSize(kRegSettings, widthPx, heightPx);
  int largestWidthPx = 0, largestHeightPx = 0;
  m_tessera.Faces().LargestMainSize(largestWidthPx, largestHeightPx);
  widthPx = std::min(widthPx, largestWidthPx);
  heightPx = std::min(heightPx, largestHeightPx);
  m_face = m_tessera.Faces().CreateMainFrame(*this, widthPx, heightPx);
  if (!m_face) return false;
  OnTraceRowCount(-1);
  OnTraceFiltered(-1);
  m_face->SetMenu(IDR_MAINFRAME);
  UpdateTitle();
  if (NtRegGet(HKEY_CURRENT_USER, kRegSettings, kTabs, 0U) == 1) ShowTabs(true);
  return true;
}

void CMainFrame::ShowWindow() {
  m_face->Show(ReadWindowMaximised(kRegSettings));
}

void CMainFrame::MapBars() {
  for (const unsigned bar : {ID_VIEW_TOOLBAR, ID_VIEW_STATUS_BAR}) {
    MapCommand(
        bar, [this, bar] { m_face->ShowBar(bar, !m_face->IsBarShown(bar)); },
        [this, bar](CCmdUI& ui) { ui.SetCheck(m_face->IsBarShown(bar)); });
  }
}

void CMainFrame::MapTabs() {
  MapCommand(
      ID_WINDOW_TABS,
      [this] {
        ShowTabs(!m_tabs);
        NtRegPut(HKEY_CURRENT_USER, kRegSettings, kTabs, m_tabs ? 1U : 0U);
      },
      [this](CCmdUI& ui) { ui.SetCheck(m_tabs); });
}

void CMainFrame::ShowTabs(bool on) {
  m_tabs = on;
  m_face->ShowTabs(on);
}

// Kept: both handlers are entered under the row count's pane. The first entry of an id is used, so
// the second handler is never called, the filter's pane has no handler, and its text stays until
// the next WM_TRACE_FILTERED. Safe: a pane only shows text.
void CMainFrame::MapPanes() {
  const struct {
    unsigned id;
    void (CMainFrame::*update)(CCmdUI&);
  } table[] = {{kPaneRowCount, &CMainFrame::OnUpdateRowCount},
               {kPaneRowCount, &CMainFrame::OnUpdateFiltered}};
  std::set<unsigned> taken;
  for (const auto& entry : table) {
    if (!taken.insert(entry.id).second) continue;
    MapUpdate(entry.id, [this, update = entry.update](CCmdUI& ui) { (this->*update)(ui); });
  }
}

void CMainFrame::OnUpdateRowCount(CCmdUI& ui) {
  ui.Enable();
}

void CMainFrame::OnUpdateFiltered(CCmdUI& ui) {
  ui.Enable();
}

void CMainFrame::MapHelp() {
  for (const unsigned id : {ID_HELP_INDEX, ID_DEFAULT_HELP})
    MapCommand(id, [this] { m_tessera.Faces().ShowHelp(""); });
  for (const unsigned id : {ID_HELP, ID_CONTEXT_HELP})
    MapCommand(id, [this] { m_tessera.Faces().ShowHelp(HelpTopic()); });
}

const char* CMainFrame::HelpTopic() const {
  const CDialog* const dialog = GetHost().ModalDialog();
  if (dialog && *dialog->HelpTopic()) return dialog->HelpTopic();
  const CMDIChildWnd* const child = MDIGetActive();
  const auto* const traces = dynamic_cast<const CTraceChildFrame*>(child);
  if (traces && traces->IsTreeShown()) return "tree";
  const unsigned resource = child ? child->MenuResource() : 0;
  if (resource == IDR_MONITOR) return "monitor";
  if (resource == IDR_CONFIG) return "configuration";
  if (resource == IDR_SOURCE) return "source";
  return resource == IDR_TRACEFILE ? "list" : "window";
}

void CMainFrame::OnSize(SizeType type, int widthPx, int heightPx) {
  StoreWindowSize(kRegSettings, type, widthPx, heightPx);
  StoreWindowMaximised(kRegSettings, type);
}

bool CMainFrame::MayQuickClose() {
  if (!HasDocument(m_tessera.ConfigTemplate()) && !HasDocument(m_tessera.MonitorTemplate()))
    return true;
  MessageBoxRequest question;
  question.text = "Quick Close (selecting yes will exit without saving any files)?";
  question.caption = "Application Exit";
  question.icon = BoxIcon::Question;
  question.buttons = BoxButtons::YesNoCancel;
  question.preferred = BoxAnswer::No;  // an accidental Enter loses nothing
  const BoxAnswer answer = GetHost().MessageBox(question);
  if (answer == BoxAnswer::Yes) g_quickClose = true;
  return answer != BoxAnswer::Cancel;
}

void CMainFrame::OnClose() {
  if (m_closing) return;
  // A running search for a source file is cancelled first. Its caller is on the stack.
  if (LocateWait::CancelStanding()) {
    PostCall([this] { OnClose(); });
    return;
  }
  m_closing = true;
  const bool leave = MayQuickClose() && m_tessera.SaveAllModified();
  if (leave) {
    m_tessera.CloseAllDocuments();
    m_loadStatus.reset();  // the box of a failed load is destroyed with its owner
    GetHost().SetMainWindow(nullptr);
    m_face->Close();
  }
  m_closing = false;
}

void CMainFrame::OnDropFiles(const std::vector<std::string>& paths) {
  if (paths.size() == 1) {
    m_tessera.OpenDocumentFile(paths.front());
    return;
  }
  std::vector<FailedOpen> failed;
  for (const std::string& path : paths) {
    const std::string why = m_tessera.TryOpen(path);
    if (!why.empty()) failed.push_back({path, why});
  }
  SetNotice(FailedText(failed, paths.size()), FailedDetails(failed));
}

void CMainFrame::SetNotice(const std::string& notice, const std::string& details) {
  m_notice = notice;
  m_noticeDetails = details;
  if (!m_face) return;
  ShowMessage();
  if (notice.empty() || m_face->IsBarShown(ID_VIEW_STATUS_BAR)) return;
  GetHost().MessageBox({details.empty() ? notice : details, BoxIcon::Warning, BoxButtons::Ok});
}

void CMainFrame::OnIdle() {
  if (m_face) ShowMessage();
}

void CMainFrame::ShowMessage() {
  const FrontTexts texts = TextsOfFront(MDIGetActive(), m_rows);
  m_face->SetPaneText(kPaneMessage, m_notice.empty() ? texts.message : m_notice);
  m_face->SetPaneToolTip(kPaneMessage, m_notice.empty() ? texts.details : m_noticeDetails);
  m_face->SetPaneToolTip(kPaneRowCount, texts.rows);
  m_face->SetPaneText(kPaneZone, texts.zone);
}

std::intptr_t CMainFrame::OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  switch (message) {
    case WM_TRACE_ROWCOUNT:
      OnTraceRowCount(static_cast<std::int32_t>(wParam));
      return 0;
    case WM_TRACE_FILTERED:
      OnTraceFiltered(static_cast<std::int32_t>(wParam));
      return 0;
    case WM_TRACE_PROGRESS:
      OnTraceProgress(wParam, lParam);
      return 0;
    default:
      return CMDIFrameWnd::OnMessage(message, wParam, lParam);
  }
}

void CMainFrame::OnTraceRowCount(std::int32_t count) {
  if (!m_face) return;
  const auto rows = static_cast<std::uint32_t>(count);
  m_rows = count == -1 ? -1 : static_cast<std::int64_t>(rows);
  m_face->SetPaneText(kPaneRowCount, count == -1 ? "" : std::to_string(rows));
}

void CMainFrame::OnTraceFiltered(std::int32_t filtered) {
  if (!m_face) return;
  m_face->SetPaneText(kPaneFiltered, filtered == 0 || filtered == -1 ? "" : "FILTERED");
}

void CMainFrame::OnTraceProgress(std::uintptr_t what, std::intptr_t value) {
  if (what == kLoadStart) {
    const auto start = TakeLoadStart(value);
    if (start && m_face) OnLoadStart(*start);
  } else if (what == kLoadPosition) {
    // Two overlapping loads: the first done message removed the box, and the other load still
    // reports.
    if (m_loadStatus) m_loadStatus->SetPosition(static_cast<std::uint32_t>(value));
  } else if (what == kLoadDone) {
    m_loadStatus.reset();
  }
}

// A second load replaces caption, path and range; Cancel stays with the load that made the box.
void CMainFrame::OnLoadStart(const CLoadProgressStart& start) {
  if (!m_loadStatus) m_loadStatus = std::make_unique<CLoadStatus>(GetHost(), start.cancelEvent);
  m_loadStatus->SetCaption(start.caption);
  m_loadStatus->SetUp(start.path, start.size);
}

std::unique_ptr<ChildFrameFace> CMainFrame::CreateChildFace(CMDIChildWnd& child, int widthPx,
                                                            int heightPx) {
  return m_face->CreateChild(child, widthPx, heightPx);
}

// Tabs cannot be cascaded or tiled: these commands make them windows again.
void CMainFrame::LayOutChildren(WindowLayout layout) {
  if (m_tabs && layout != WindowLayout::ArrangeIcons) OnCommand(ID_WINDOW_TABS);
  m_face->LayOutChildren(layout);
}

void CMainFrame::OnActiveChild(CMDIChildWnd* child) {
  const unsigned resource = child ? child->MenuResource() : 0;
  if (m_face) m_face->SetMenu(resource ? resource : IDR_MAINFRAME);
  if (child) SetNotice({});
  CMDIFrameWnd::OnActiveChild(child);
}

void CMainFrame::UpdateTitle() {
  if (!m_face) return;
  const CMDIChildWnd* child = MDIGetActive();
  m_face->SetTitle(child && m_childMaximised
                       ? std::string(kProgramTitle) + " - [" + child->Title() + "]"
                       : kProgramTitle);
}
