#include "docview/doc_template.h"

#include <strings.h>

#include <algorithm>
#include <filesystem>
#include <utility>

#include "docview/win_app.h"

CMultiDocTemplate::CMultiDocTemplate(unsigned resource, std::string docString,
                                     CMDIFrameWnd*& mainFrame, Makers makers)
    : m_resource(resource),
      m_docString(std::move(docString)),
      m_mainFrame(mainFrame),
      m_makers(std::move(makers)) {}

CMultiDocTemplate::~CMultiDocTemplate() {
  CloseAllDocuments();
}

std::string CMultiDocTemplate::GetDocString(DocStringIndex index) const {
  std::size_t from = 0;
  for (int part = 0; part < index; ++part) {
    from = m_docString.find('\n', from);
    if (from == std::string::npos) return {};
    ++from;
  }
  return m_docString.substr(from, m_docString.find('\n', from) - from);
}

bool CMultiDocTemplate::Matches(const std::string& path) const {
  const std::string extension = GetDocString(filterExt);
  return !extension.empty() &&
         strcasecmp(std::filesystem::path(path).extension().c_str(), extension.c_str()) == 0;
}

std::vector<FileFilter> CMultiDocTemplate::FileFilters() const {
  std::vector<FileFilter> filters;
  if (!GetDocString(filterName).empty()) {
    filters.push_back({GetDocString(filterName), "*" + GetDocString(filterExt)});
  }
  filters.push_back({"All Files (*.*)", "*"});
  return filters;
}

CWinApp* CMultiDocTemplate::App() const {
  return m_mainFrame ? &m_mainFrame->App() : nullptr;
}

CDocument* CMultiDocTemplate::OpenDocumentFile(const std::string* path, bool visible) {
  m_refusal = {};
  CDocument* const document = CreateNewDocument();
  if (!document) return nullptr;
  CMDIChildWnd* const frame = CreateNewFrame(*document);
  if (!frame) {
    RemoveDocument(document);
    return nullptr;
  }
  if (!path) SetDefaultTitle(*document);
  if (path ? !document->OnOpenDocument(*path) : !document->OnNewDocument()) {
    m_refusal = document->LastRefusal();
    frame->Destroy();  // destroys the document too, whose last frame it is
    return nullptr;
  }
  if (path) document->SetPathName(*path, true);
  InitialUpdateFrame(*frame, *document, visible);
  return document;
}

CDocument* CMultiDocTemplate::CreateNewDocument() {
  std::unique_ptr<CDocument> document = m_makers.document();
  if (!document) return nullptr;
  document->m_template = this;
  m_documents.push_back(std::move(document));
  return m_documents.back().get();
}

CMDIChildWnd* CMultiDocTemplate::CreateNewFrame(CDocument& document) {
  if (!m_mainFrame) return nullptr;
  std::unique_ptr<CMDIChildWnd> made = m_makers.frame();
  if (!made) return nullptr;
  made->m_menuResource = m_resource;
  int widthPx = 0, heightPx = 0;
  made->PreCreateWindow(widthPx, heightPx);
  made->m_face = m_mainFrame->CreateChildFace(*made, widthPx, heightPx);
  if (!made->m_face) return nullptr;
  CMDIChildWnd* const frame = m_mainFrame->AddChild(std::move(made));
  frame->AddView(m_makers.view(document));
  frame->OnCreate();
  return frame;
}

void CMultiDocTemplate::InitialUpdateFrame(CMDIChildWnd& frame, CDocument& document, bool visible) {
  frame.InitialUpdateFrame(&document, visible);
}

void CMultiDocTemplate::SetDefaultTitle(CDocument& document) {
  std::string name = GetDocString(docName);
  if (name.empty()) name = GetDocString(fileNewName);
  document.SetTitle(name + std::to_string(++m_untitled));
}

void CMultiDocTemplate::RemoveDocument(CDocument* document) {
  const auto place = std::find_if(m_documents.begin(), m_documents.end(),
                                  [document](const auto& each) { return each.get() == document; });
  if (place == m_documents.end()) return;
  // Removed from the list before its destructor runs.
  const std::unique_ptr<CDocument> gone = std::move(*place);
  m_documents.erase(place);
}

std::vector<CDocument*> CMultiDocTemplate::DocumentsNow() const {
  std::vector<CDocument*> documents;
  for (const auto& document : m_documents) documents.push_back(document.get());
  return documents;
}

bool CMultiDocTemplate::Holds(const CDocument* document) const {
  return std::any_of(m_documents.begin(), m_documents.end(),
                     [document](const auto& each) { return each.get() == document; });
}

bool CMultiDocTemplate::SaveAllModified() {
  for (CDocument* const document : DocumentsNow()) {
    if (Holds(document) && !document->SaveModified()) return false;
  }
  return true;
}

void CMultiDocTemplate::CloseAllDocuments() {
  for (CDocument* const document : DocumentsNow()) {
    if (Holds(document)) document->OnCloseDocument();
  }
}
