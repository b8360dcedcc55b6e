#include "docview/document.h"

#include <unistd.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "docview/doc_template.h"
#include "docview/view.h"
#include "docview/win_app.h"

namespace {

// The last part of a file's path. The path of a document without a file may be any text, even with
// slashes; such a text is not cut.
std::string LastPart(const std::string& path) {
  const std::filesystem::path file(path);
  return file.is_absolute() ? file.filename().string() : path;
}

}  // namespace

CDocument::~CDocument() {
  for (CView* const view : m_views) view->m_document = nullptr;
}

bool CDocument::OnNewDocument() {
  DeleteContents();
  m_path.clear();
  m_modified = false;
  return true;
}

bool CDocument::Refuse(OpenRefusal refusal) {
  m_refusal = std::move(refusal);
  return false;
}

bool CDocument::OnOpenDocument(const std::string&) {
  return false;
}

bool CDocument::OnSaveDocument(const std::string&) {
  return false;
}

bool CDocument::SaveModified() {
  if (!m_modified) return true;
  const std::string name = m_path.empty() ? m_title : LastPart(m_path);
  MessageBoxRequest question;
  question.text = "Save changes to " + name + "?";
  question.icon = BoxIcon::Warning;
  question.buttons = BoxButtons::YesNoCancel;
  switch (m_host.MessageBox(question)) {
    case BoxAnswer::Yes:
      return DoFileSave();
    case BoxAnswer::No:
      return true;
    default:
      return false;
  }
}

// The path of a document without a file names no file, even where the current folder has one.
bool CDocument::DoFileSave() {
  const bool inPlace =
      std::filesystem::path(m_path).is_absolute() && access(m_path.c_str(), W_OK) == 0;
  return DoSave(inPlace ? &m_path : nullptr, true);
}

void CDocument::OnCloseDocument() {
  if (m_closing) return;
  m_closing = true;
  // The end of a frame may end others, so the list is read again each time.
  for (auto frames = Frames(); !frames.empty(); frames = Frames()) frames.front()->Destroy();
  DeleteContents();
  if (m_template) m_template->RemoveDocument(this);  // destroys this
}

bool CDocument::DoSave(const std::string* path, bool replace) {
  std::string name = path ? *path : std::string();
  if (name.empty()) {
    FileDialogRequest request;
    request.save = true;
    request.title = replace ? "Save As" : "Save Copy As";
    request.suggestedName = m_path.empty() && replace ? m_title : m_path;
    if (m_template) {
      request.defaultExtension = m_template->GetDocString(CMultiDocTemplate::filterExt);
      request.filters = m_template->FileFilters();
    }
    const auto answer = m_host.RunFileDialog(request);
    if (!answer) return false;
    name = answer->path;
  }
  // A failed save leaves the part that it wrote: kept, because the file could be the user's
  // original, opened under another name.
  if (!OnSaveDocument(name)) return false;
  if (replace) SetPathName(name, true);
  return true;
}

void CDocument::UpdateAllViews(CView* sender, unsigned hint, CObject* object) {
  // A copy: views may be added or removed while the views are notified.
  const std::vector<CView*> views = m_views;
  for (CView* const view : views) {
    const bool here = std::find(m_views.begin(), m_views.end(), view) != m_views.end();
    if (here && view != sender) view->OnUpdate(sender, hint, object);
  }
}

void CDocument::AddView(CView* view) {
  m_views.push_back(view);
}

void CDocument::RemoveView(CView* view) {
  std::erase(m_views, view);
}

std::vector<CFrameWnd*> CDocument::Frames() const {
  std::vector<CFrameWnd*> frames;
  for (const CView* const view : m_views) {
    CFrameWnd* const frame = view->GetParentFrame();
    if (frame && std::find(frames.begin(), frames.end(), frame) == frames.end()) {
      frames.push_back(frame);
    }
  }
  return frames;
}

void CDocument::UpdateFrameTitles() {
  for (CFrameWnd* const frame : Frames()) frame->UpdateTitle();
}

void CDocument::SetTitle(const std::string& title) {
  m_title = title;
  UpdateFrameTitles();
}

void CDocument::SetPathName(const std::string& path, bool addToRecent) {
  m_path = path;
  SetTitle(LastPart(path));
  CWinApp* const app = addToRecent && m_template ? m_template->App() : nullptr;
  if (!app) return;
  // File Open would open a file of an unregistered template with another template.
  const auto& known = app->Templates();
  if (std::any_of(known.begin(), known.end(),
                  [this](const auto& each) { return each.get() == m_template; }))
    app->AddToRecentFileList(path);
}
