// A document template: makes document, frame and view of one kind and keeps its open documents.
//
// Shape    The document string has seven parts split by "\n": window title, document name, name
//          for New, filter label, filter extension, type id, type name.
// Owner    The template owns its documents; the main frame owns the frames.
// Errors   A null result: the new frame has been destroyed again, and the document has shown any
//          message.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "docview/document.h"
#include "docview/frame.h"

class CMultiDocTemplate {
 public:
  enum DocStringIndex {
    windowTitle,
    docName,
    fileNewName,
    filterName,
    filterExt,
    regFileTypeId,
    regFileTypeName
  };
  struct Makers {
    std::function<std::unique_ptr<CDocument>()> document;
    std::function<std::unique_ptr<CMDIChildWnd>()> frame;
    std::function<std::unique_ptr<CView>(CDocument&)> view;
  };

  CMultiDocTemplate(unsigned resource, std::string docString, CMDIFrameWnd*& mainFrame,
                    Makers makers);
  ~CMultiDocTemplate();

  unsigned Resource() const { return m_resource; }
  std::string GetDocString(DocStringIndex index) const;
  // By the extension, ignoring case.
  bool Matches(const std::string& path) const;

  // For a file dialog: this template's files, then all files.
  std::vector<FileFilter> FileFilters() const;
  // Null before the main frame exists.
  CWinApp* App() const;

  // A new document with its frame; `path` null for an empty one.
  CDocument* OpenDocumentFile(const std::string* path, bool visible = true);
  // Of the document that the last OpenDocumentFile did not open.
  const OpenRefusal& LastRefusal() const { return m_refusal; }
  // The steps of OpenDocumentFile, for callers with a sequence of their own.
  CDocument* CreateNewDocument();
  CMDIChildWnd* CreateNewFrame(CDocument& document);
  void InitialUpdateFrame(CMDIChildWnd& frame, CDocument& document, bool visible);
  // "Trace File1", "Trace File2", ...
  void SetDefaultTitle(CDocument& document);

  const std::vector<std::unique_ptr<CDocument>>& Documents() const { return m_documents; }
  // Destroys the document. REQUIRES: it has no views.
  void RemoveDocument(CDocument* document);
  // Asks each document; false at the first refusal.
  bool SaveAllModified();
  // Closes all without asking.
  void CloseAllDocuments();

 private:
  unsigned m_resource;
  std::string m_docString;
  CMDIFrameWnd*& m_mainFrame;
  Makers m_makers;
  std::vector<std::unique_ptr<CDocument>> m_documents;
  OpenRefusal m_refusal;
  int m_untitled = 0;

  std::vector<CDocument*> DocumentsNow() const;
  bool Holds(const CDocument* document) const;
};
