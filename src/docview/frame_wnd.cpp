#include "docview/frame_wnd.h"

#include <utility>

#include "docview/document.h"

CFrameWnd::~CFrameWnd() {
  m_activeView = nullptr;
}

CDocument* CFrameWnd::GetActiveDocument() const {
  return m_activeView ? m_activeView->GetDocument() : nullptr;
}

void CFrameWnd::SetActiveView(CView* view, bool notify) {
  if (view == m_activeView) return;
  CView* const before = std::exchange(m_activeView, view);
  if (!notify) return;
  if (before) before->OnActivateView(false, view, before);
  // The losing view may have activated another view.
  if (view && m_activeView == view) view->OnActivateView(true, view, before);
}

CView* CFrameWnd::AddView(std::unique_ptr<CView> view) {
  view->m_frame = this;
  m_views.push_back(std::move(view));
  return m_views.back().get();
}

void CFrameWnd::RemoveView(CView* view) {
  std::erase_if(m_views, [view](const auto& each) { return each.get() == view; });
}

CView* CFrameWnd::MainPane() const {
  for (const auto& view : m_views) {
    if (view->GetDlgCtrlID() == CView::kMainPane) return view.get();
  }
  return nullptr;
}

void CFrameWnd::InitialUpdateFrame(CDocument* document, bool visible) {
  if (!m_activeView) SetActiveView(MainPane(), IsActive());
  if (visible) {
    for (std::size_t i = 0; i < m_views.size(); ++i) m_views[i]->OnInitialUpdate();
  }
  ShowMainPane();
  if (document) {
    document->UpdateFrameTitles();
  } else {
    UpdateTitle();
  }
  if (visible) ActivateFrame();
}
