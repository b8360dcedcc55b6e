#include "docview/win_app.h"

#include <algorithm>
#include <filesystem>
#include <utility>

#include "docview/commands/command_ids.h"

namespace fs = std::filesystem;

namespace {
// Absolute, with links in the folder resolved; the file keeps the name that the user knows.
std::string FullPath(const std::string& path) {
  std::error_code error;
  const fs::path absolute = fs::absolute(path, error);
  if (error) return path;
  const fs::path folder = fs::weakly_canonical(absolute.parent_path(), error);
  return error ? absolute.string() : (folder / absolute.filename()).string();
}

// Two names of one file have equal canonical paths.
std::string CanonicalPath(const std::string& path) {
  std::error_code error;
  const fs::path canonical = fs::weakly_canonical(path, error);
  return error ? path : canonical.string();
}
}  // namespace

CWinApp::CWinApp(Host& host) : m_host(host) {
  MapCommand(ID_FILE_OPEN, [this] { OnFileOpen(); });
  for (std::size_t i = 0; i < kRecentFiles; ++i) {
    MapCommand(
        ID_FILE_MRU_FILE1 + static_cast<unsigned>(i), [this, i] { OpenRecentFile(i); },
        [this, i](CCmdUI& ui) { ui.Enable(i < m_recent.size()); });
  }
}

CWinApp::~CWinApp() = default;

CMultiDocTemplate* CWinApp::AddDocTemplate(std::unique_ptr<CMultiDocTemplate> docTemplate) {
  m_templates.push_back(std::move(docTemplate));
  return m_templates.back().get();
}

CCommandLineInfo CWinApp::ParseCommandLine(const std::vector<std::string>& arguments) {
  CCommandLineInfo info;
  bool optionsEnded = false;
  for (const std::string& argument : arguments) {
    if (!optionsEnded && argument == "--") {
      optionsEnded = true;
    } else if (!argument.empty() && (optionsEnded || argument[0] != '-')) {
      std::error_code error;
      const fs::path absolute = fs::absolute(argument, error);
      info.command = CCommandLineInfo::FileOpen;
      info.file = error ? argument : absolute.string();
      break;
    }
  }
  return info;
}

bool CWinApp::ProcessShellCommand(const CCommandLineInfo& info) {
  switch (info.command) {
    case CCommandLineInfo::FileOpen:
      return OpenDocumentFile(info.file) != nullptr;
    case CCommandLineInfo::FileNew:
      return !m_templates.empty() && m_templates.front()->OpenDocumentFile(nullptr) != nullptr;
    default:
      return true;
  }
}

CDocument* CWinApp::FindOpenDocument(const std::string& path) const {
  const std::string canonical = CanonicalPath(path);
  for (const auto& docTemplate : m_templates) {
    for (const auto& document : docTemplate->Documents()) {
      const std::string& open = document->GetPathName();
      // The path of a document without a file may be any text.
      if (fs::path(open).is_absolute() && CanonicalPath(open) == canonical) return document.get();
    }
  }
  return nullptr;
}

CDocument* CWinApp::OpenDocumentFile(const std::string& path) {
  if (m_templates.empty()) return nullptr;
  const std::string full = FullPath(path);
  if (CDocument* const open = FindOpenDocument(full)) {
    const std::vector<CFrameWnd*> frames = open->Frames();
    if (!frames.empty()) frames.front()->ActivateFrame();
    AddToRecentFileList(open->GetPathName());
    return open;
  }
  CMultiDocTemplate* taker = m_templates.front().get();
  for (const auto& docTemplate : m_templates) {
    if (docTemplate->Matches(full)) {
      taker = docTemplate.get();
      break;
    }
  }
  CDocument* const document = taker->OpenDocumentFile(&full);
  if (!document && !taker->LastRefusal().fileIsGood) {
    RemoveFromRecentFileList(path);
    RemoveFromRecentFileList(full);
  }
  return document;
}

// The folder of the document in front, with a slash; empty when it has no file.
std::string CWinApp::FolderOfActive() const {
  const CMDIChildWnd* const front = m_mainFrame ? m_mainFrame->MDIGetActive() : nullptr;
  const CDocument* const document = front ? front->GetActiveDocument() : nullptr;
  const fs::path file(document ? document->GetPathName() : std::string());
  return file.is_absolute() ? (file.parent_path() / "").string() : std::string();
}

std::optional<std::string> CWinApp::DoPromptFileName(const CMultiDocTemplate* docTemplate) {
  FileDialogRequest request;
  request.title = "Open";
  request.suggestedName = FolderOfActive();
  for (const auto& each : m_templates) {
    const std::string label = each->GetDocString(CMultiDocTemplate::filterName);
    const std::string extension = each->GetDocString(CMultiDocTemplate::filterExt);
    if (label.empty() || (docTemplate && each.get() != docTemplate)) continue;
    if (request.defaultExtension.empty()) request.defaultExtension = extension;
    request.filters.push_back({label, "*" + extension});
  }
  request.filters.push_back({"All Files (*.*)", "*"});
  const std::optional<FileDialogAnswer> answer = m_host.RunFileDialog(request);
  return answer ? std::optional(answer->path) : std::nullopt;
}

void CWinApp::OnFileOpen() {
  if (const std::optional<std::string> path = DoPromptFileName(nullptr)) OpenDocumentFile(*path);
}

void CWinApp::OpenRecentFile(std::size_t index) {
  if (index >= m_recent.size()) return;
  const std::string path = m_recent[index];  // a copy: opening reorders the list
  OpenDocumentFile(path);
}

void CWinApp::AddToRecentFileList(const std::string& path) {
  std::vector<std::string> paths = m_recent;
  std::erase(paths, path);
  paths.insert(paths.begin(), path);
  SetRecentFiles(std::move(paths));
  OnRecentFilesChanged();
}

void CWinApp::RemoveFromRecentFileList(const std::string& path) {
  if (std::erase(m_recent, path) > 0) OnRecentFilesChanged();
}

void CWinApp::SetRecentFiles(std::vector<std::string> paths) {
  m_recent = std::move(paths);
  if (m_recent.size() > kRecentFiles) m_recent.resize(kRecentFiles);
}

bool CWinApp::SaveAllModified() {
  return std::all_of(m_templates.begin(), m_templates.end(),
                     [](const auto& docTemplate) { return docTemplate->SaveAllModified(); });
}

void CWinApp::CloseAllDocuments() {
  for (const auto& docTemplate : m_templates) docTemplate->CloseAllDocuments();
}
