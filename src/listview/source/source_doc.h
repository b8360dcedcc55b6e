// The source file of a trace: found on this machine, by a mapping, or by asking the user.
//
// Shape    The document's path is the opened file. The recorded path is stored too, so that the
//          next trace of that file finds this window.
// Threads  Interface thread.
#pragma once

#include <string>

#include "listview/source/rich_edit_doc.h"

class CSourceDoc : public CRichEditDoc {
 public:
  using CRichEditDoc::CRichEditDoc;

  // `path` as in a trace. Sets the path and title of the file.
  bool OnOpenDocument(const std::string& path) override;
  // True without a question after a Quick Close.
  bool SaveModified() override;

  std::string m_requestedPath;
};
