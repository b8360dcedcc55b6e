// A document whose text is edited in a control: plain text, from and to a file.
//
// Saving   The save command asks for a name and suggests the file that was opened. When a window
//          closes and the user answers Yes, the file is saved in place.
// Owner    From its first update on, the first view's control has the text. The document keeps the
//          text that it read last, for that update.
// Errors   A message box, if a file cannot be read, shown or written.
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
  // Writes the text of the view, in the encoding that the file had. The document is not modified
  // afterwards.
  bool OnSaveDocument(const std::string& path) override;
  void DeleteContents() override;
  bool ShowsEdits() const override { return true; }

  const std::string& Text() const { return m_file.text; }
  CRichEditView* GetView() const;  // the first one, null when there is none

 private:
  TextFile m_file;
};
