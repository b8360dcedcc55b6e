// A source file that a trace names: found here, by a mapping, or by asking.
//
// Shape    The document's path is the file that was opened; the path that was asked for is kept
//          beside it, so that the next trace of that file finds this window.
// Threads  Interface thread.
#pragma once

#include <string>

#include "listview/source/rich_edit_doc.h"

class CSourceDoc : public CRichEditDoc {
 public:
  using CRichEditDoc::CRichEditDoc;

  // `path` as a trace has it. Gives the document the path and title of the file.
  bool OnOpenDocument(const std::string& path) override;
  // True at once after a Quick Close.
  bool SaveModified() override;

  std::string m_requestedPath;
};
