#include "docview/view.h"

#include "docview/document.h"

CView::CView(CDocument& document) : CWnd(document.GetHost()), m_document(&document) {
  document.AddView(this);
}

CView::~CView() {
  if (m_document) m_document->RemoveView(this);
}

void CView::OnInitialUpdate() {
  OnUpdate(nullptr, 0, nullptr);
}

void CView::OnUpdate(CView*, unsigned, CObject*) {}

void CView::OnActivateView(bool activate, CView*, CView*) {
  if (activate && Control()) Control()->SetFocus();
}

bool CView::OnCommand(unsigned id) {
  return CWnd::OnCommand(id) || (m_document && m_document->OnCommand(id));
}

bool CView::OnUpdateCommand(CCmdUI& ui) {
  return CWnd::OnUpdateCommand(ui) || (m_document && m_document->OnUpdateCommand(ui));
}

bool CView::HasCommand(unsigned id) const {
  return CWnd::HasCommand(id) || (m_document && m_document->HasCommand(id));
}
