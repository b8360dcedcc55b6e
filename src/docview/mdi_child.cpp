#include <algorithm>
#include <utility>

#include "docview/commands/command_ids.h"
#include "docview/document.h"
#include "docview/frame.h"
#include "docview/win_app.h"

CMDIChildWnd::CMDIChildWnd(CMDIFrameWnd& parent) : CFrameWnd(parent.GetHost()), m_parent(parent) {
  MapCommand(ID_FILE_CLOSE, [this] { OnClose(); });
}

CMDIChildWnd::~CMDIChildWnd() {
  m_destroyed = true;
  m_activeView = nullptr;
  m_views.clear();  // before the face, whose window contains theirs
  m_face.reset();
}

void CMDIChildWnd::PreCreateWindow(int&, int&) {}

void CMDIChildWnd::OnSize(SizeType, int, int) {}

void CMDIChildWnd::OnContextMenu(int, int) {}

bool CMDIChildWnd::IsActive() const {
  return m_parent.m_activeChild == this;
}

void CMDIChildWnd::NotifyActiveView(bool active) {
  if (CView* const view = m_activeView) view->OnActivateView(active, view, view);
}

void CMDIChildWnd::OnActivate(bool active) {
  if (m_destroyed || active == IsActive()) return;
  CMDIChildWnd* const before = std::exchange(m_parent.m_activeChild, active ? this : nullptr);
  if (before) before->NotifyActiveView(false);
  if (active) NotifyActiveView(true);
  m_parent.OnActiveChild(m_parent.m_activeChild);
}

void CMDIChildWnd::OnClose() {
  if (m_asking || m_destroyed) return;
  CDocument* const document = m_views.empty() ? nullptr : m_views.front()->GetDocument();
  if (!document || document->Frames().size() > 1) {
    Destroy();
    return;
  }
  m_asking = true;
  const bool mayGo = document->SaveModified();
  m_asking = false;
  if (mayGo) document->OnCloseDocument();
}

void CMDIChildWnd::Destroy() {
  if (m_destroyed) return;
  OnDestroy();
  m_destroyed = true;
  const bool wasActive = IsActive();
  if (wasActive) {
    m_parent.m_activeChild = nullptr;
    NotifyActiveView(false);
  }
  m_activeView = nullptr;
  std::vector<CDocument*> documents;
  for (const auto& view : m_views) {
    CDocument* const document = view->GetDocument();
    if (document && std::find(documents.begin(), documents.end(), document) == documents.end()) {
      documents.push_back(document);
    }
  }
  CMDIFrameWnd& parent = m_parent;
  // After this line only locals are used: `self` is destroyed with its views and its window. The
  // window system may react by activating another child.
  std::unique_ptr<CMDIChildWnd> self = parent.TakeChild(*this);
  self.reset();
  if (wasActive && !parent.m_activeChild) parent.OnActiveChild(nullptr);
  for (CDocument* const document : documents) {
    if (document->Views().empty()) {
      document->OnCloseDocument();
    } else {
      document->UpdateFrameTitles();
    }
  }
}

bool CMDIChildWnd::OnCommand(unsigned id) {
  return (m_activeView && m_activeView->OnCommand(id)) || CFrameWnd::OnCommand(id);
}

bool CMDIChildWnd::OnUpdateCommand(CCmdUI& ui) {
  return (m_activeView && m_activeView->OnUpdateCommand(ui)) || CFrameWnd::OnUpdateCommand(ui);
}

bool CMDIChildWnd::HasCommand(unsigned id) const {
  return (m_activeView && m_activeView->HasCommand(id)) || CFrameWnd::HasCommand(id);
}

void CMDIChildWnd::UpdateTitle() {
  const CDocument* const document = m_views.empty() ? nullptr : m_views.front()->GetDocument();
  std::string title = document ? document->GetTitle() : std::string();
  if (document) {
    const std::vector<CFrameWnd*> frames = document->Frames();
    const auto place = std::find(frames.begin(), frames.end(), this);
    if (frames.size() > 1 && place != frames.end()) {
      title += ":" + std::to_string(place - frames.begin() + 1);
    }
    if (document->ShowsEdits() && document->IsModified()) title += '*';
  }
  if (title == m_title) return;
  m_title = title;
  if (m_face) m_face->SetTitle(m_title);
  if (IsActive()) m_parent.UpdateTitle();
}

void CMDIChildWnd::ActivateFrame() {
  if (!m_face) return;
  m_face->Show();
  m_face->Activate();
}

void CMDIChildWnd::ShowMainPane() {
  CView* const view = MainPane();
  if (m_face && view) m_face->ShowView(*view);
}
