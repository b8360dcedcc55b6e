#include "listview/source/rich_edit_view.h"

#include "docview/commands/command_ids.h"

CRichEditView::CRichEditView(CRichEditDoc& document, const RichEditMaker& makeEdit)
    : CView(document), m_text(document), m_edit(makeEdit(*this)) {
  MapCommand(
      ID_EDIT_COPY, [this] { m_edit->Copy(); },
      [this](CCmdUI& ui) { ui.Enable(m_edit->HasSelection()); });
  MapCommand(ID_EDIT_FIND, [this] { OnEditFind(); });
  // No Find Next: the menu of these windows has none, and the box has a button for it.
}

CRichEditView::~CRichEditView() = default;

void CRichEditView::OnInitialUpdate() {
  m_edit->SetText(m_text.Text());
  CView::OnInitialUpdate();
}

void CRichEditView::OnActivateView(bool activate, CView* activated, CView* deactivated) {
  if (!activate) m_findDialog.reset();
  CView::OnActivateView(activate, activated, deactivated);
}

void CRichEditView::OnEditModified(bool modified) {
  m_text.SetModifiedFlag(modified);
  m_text.UpdateFrameTitles();
}

// The selected word is the most likely one to search for.
void CRichEditView::OnEditFind() {
  RichEditFind start = m_lastFind;
  const std::string selected = m_edit->HasSelection() ? m_edit->GetSelText() : std::string();
  if (!selected.empty() && selected.find('\n') == selected.npos) start.text = selected;
  m_findDialog = std::make_unique<FindTextDialog>(
      GetHost(), start, [this](const RichEditFind& find) { FindNext(find); });
}

void CRichEditView::FindNext(const RichEditFind& find) {
  m_lastFind = find;
  if (m_edit->FindText(find)) return;
  GetHost().MessageBox({FindTextDialog::kNotFound, BoxIcon::None, BoxButtons::Ok});
}
