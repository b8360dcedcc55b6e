// A document whose text is edited in a control: plain text, from and to a file.
//
// Saving   The save command asks for a name and suggests the file that was opened. The question
//          of a window that closes saves in place.
// Owner    The text lives in the first view's control from its first update on; the document keeps
//          what it read last, for that update.
// Errors   Words in a box, where a file cannot be read, shown or written.
// Threads  Interface thread.
#pragma once

#include <string>

#include "docview/document.h"
#include "listview/source/text_file.h"

class CRichEditView;

class CRichEditDoc : public CDocument {
 public:
  explicit CRichEditDoc(Host& host);

  bool OnOpenDocument(const std::string& path) override;
  // Writes the text as it stands in the view, in the form that the file had. The document is not
  // modified afterwards.
  bool OnSaveDocument(const std::string& path) override;
  void DeleteContents() override;
  bool ShowsEdits() const override { return true; }

  const std::string& Text() const { return m_file.text; }
  CRichEditView* GetView() const;  // the first one, null when there is none

 private:
  TextFile m_file;
};
