#include "shell/child_frame.h"

#include <utility>

#include "listview/rows/trace_view.h"
#include "settings/registry.h"
#include "shell/command_ids.h"
#include "shell/main_frame.h"
#include "shell/stored_size.h"
#include "shell/tessera_app.h"
#include "tree/proc/proc_view.h"

CTraceChildFrame::CTraceChildFrame(CMainFrame& parent) : CMDIChildWnd(parent), m_main(parent) {
  MapCommand(
      ID_VIEW_PROC, [this] { OnToggleTree(); },
      [this](CCmdUI& ui) {
        ui.Enable(m_list || dynamic_cast<CTraceView*>(GetActiveView()));
        ui.SetCheck(m_treeShown);
      });
}

void CTraceChildFrame::PreCreateWindow(int& widthPx, int& heightPx) {
  CMDIChildWnd::PreCreateWindow(widthPx, heightPx);
  ReadWindowSize(kRegTraceView, widthPx, heightPx);
}

void CTraceChildFrame::OnSize(SizeType type, int widthPx, int heightPx) {
  CMDIChildWnd::OnSize(type, widthPx, heightPx);
  StoreWindowSize(kRegTraceView, type, widthPx, heightPx);
  // The one in front speaks for all: another one loses the state when this one takes it. A tab is
  // as large as the room whatever the user chose for windows.
  if (IsActive() && !m_main.AreTabsShown()) StoreWindowMaximised(kRegTraceView, type);
}

bool CTraceChildFrame::BeginsMaximised() const {
  return ReadWindowMaximised(kRegTraceView);
}

void CTraceChildFrame::OnContextMenu(int screenXPx, int screenYPx) {
  m_main.Face()->TrackPopupMenu(IDR_TRACE_POPUP, screenXPx, screenYPx);
}

// Both views stay alive and go on receiving hints while they are hidden.
void CTraceChildFrame::OnToggleTree() {
  CDocument* const document = GetActiveDocument();
  if (!m_list) m_list = dynamic_cast<CTraceView*>(GetActiveView());
  if (!document || !m_list) return;
  if (m_treeShown)
    HandToList();
  else
    HandToTree();
  m_treeShown = !m_treeShown;
  CView* shown = m_tree;
  CView* hidden = m_list;
  if (!m_treeShown) std::swap(shown, hidden);
  hidden->SetDlgCtrlID(kOtherPane);
  shown->SetDlgCtrlID(CView::kMainPane);
  // First, so that what the view scrolls to is on view in the size that it has from now on.
  ShowMainPane();
  SetActiveView(shown, true);
  InitialUpdateFrame(document, true);
  shown->Control()->SetFocus();
}

void CTraceChildFrame::HandToList() {
  m_list->m_currentEvent = m_tree->CurrentEvent();
  if (!std::exchange(m_tree->m_filterChanged, false)) return;
  m_list->SetFilter(m_tree->m_filter, true);
}

void CTraceChildFrame::HandToTree() {
  const bool made = !m_tree;
  if (made) {
    ShellFaces& faces = m_main.Tessera().Faces();
    auto tree = std::make_unique<CProcView>(
        m_list->Document(), [&faces](TreeControlOwner& owner) { return faces.CreateTree(owner); });
    m_tree = static_cast<CProcView*>(AddView(std::move(tree)));
  }
  // A new tree is filled by its first update.
  if (std::exchange(m_list->m_filterChanged, false)) m_tree->SetFilter(m_list->m_filter, !made);
  m_tree->m_currentEvent = m_list->CurrentEvent();
}
