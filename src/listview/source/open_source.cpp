#include "listview/source/open_source.h"

#include <utility>

#include "base/text.h"
#include "listview/source/source_doc.h"
#include "listview/source/source_view.h"

CSourceTemplate* g_sourceTemplate = nullptr;

namespace {

constexpr char kDocString[] = "\n\nSource File\n\n\n\nSource File";

CMultiDocTemplate::Makers MakersOf(Host& host, CMDIFrameWnd*& mainFrame, RichEditMaker makeEdit) {
  CMultiDocTemplate::Makers makers;
  makers.document = [&host] { return std::make_unique<CSourceDoc>(host); };
  makers.frame = [&mainFrame] { return std::make_unique<CMDIChildWnd>(*mainFrame); };
  makers.view = [makeEdit = std::move(makeEdit)](CDocument& document) {
    return std::make_unique<CSourceView>(static_cast<CSourceDoc&>(document), makeEdit);
  };
  return makers;
}

CDocument* FindRequested(const std::string& path) {
  for (const auto& document : g_sourceTemplate->Documents()) {
    const auto& source = static_cast<const CSourceDoc&>(*document);
    if (CompareIgnoringCase(source.m_requestedPath, path) == 0) return document.get();
  }
  return nullptr;
}

// The window is made after the file was found: while the user looks for the file, nobody can close
// a window whose document is still being opened.
CDocument* OpenRequested(const std::string& path) {
  CDocument* const document = g_sourceTemplate->CreateNewDocument();
  if (!document) return nullptr;
  CMDIChildWnd* const frame =
      document->OnOpenDocument(path) ? g_sourceTemplate->CreateNewFrame(*document) : nullptr;
  if (!frame) {
    g_sourceTemplate->RemoveDocument(document);
    return nullptr;
  }
  g_sourceTemplate->InitialUpdateFrame(*frame, *document, true);
  return document;
}

}  // namespace

CSourceTemplate::CSourceTemplate(Host& host, CMDIFrameWnd*& mainFrame, RichEditMaker makeEdit)
    : CMultiDocTemplate(kResource, kDocString, mainFrame,
                        MakersOf(host, mainFrame, std::move(makeEdit))) {
  g_sourceTemplate = this;
}

CSourceTemplate::~CSourceTemplate() {
  if (g_sourceTemplate == this) g_sourceTemplate = nullptr;
}

void OpenSourceAt(const std::string& path, std::uint32_t line) {
  static bool opening = false;
  if (!g_sourceTemplate || opening) return;
  CDocument* document = FindRequested(path);
  if (!document) {
    opening = true;
    document = OpenRequested(path);
    opening = false;
  }
  if (!document) return;
  document->UpdateAllViews(nullptr, line | kHintGoToLine);
  document->Views().front()->GetParentFrame()->ActivateFrame();
}
