// The view of a text document: the control, and the commands Copy and Find.
//
// Threads  Interface thread.
#pragma once

#include <memory>

#include "docview/view.h"
#include "listview/source/find_text_dialog.h"
#include "listview/source/rich_edit.h"
#include "listview/source/rich_edit_doc.h"

class CRichEditView : public CView, public RichEditOwner {
 public:
  CRichEditView(CRichEditDoc& document, const RichEditMaker& makeEdit);
  ~CRichEditView() override;

  // Puts the document's text into the control.
  void OnInitialUpdate() override;
  // The find box closes when another window comes to the front.
  void OnActivateView(bool activate, CView* activated, CView* deactivated) override;
  ViewControl* Control() override { return m_edit.get(); }
  void OnEditModified(bool modified) override;

  RichEdit& Edit() const { return *m_edit; }
  FindTextDialog* FindDialog() const { return m_findDialog.get(); }  // null, or ended, when closed

 private:
  void OnEditFind();
  void FindNext(const RichEditFind& find);

  CRichEditDoc& m_text;
  std::unique_ptr<RichEdit> m_edit;
  RichEditFind m_lastFind;
  std::unique_ptr<FindTextDialog> m_findDialog;
};
