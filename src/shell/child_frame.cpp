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
  if (!(m_treeShown ? HandToList() : HandToTree())) return;
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

// A rebuild that the person cancels leaves all as it was, here and below: the view that shows, the
// other one, and the mark of the filter, so that the next toggle hands it over.
bool CTraceChildFrame::HandToList() {
  m_list->m_currentEvent = m_tree->CurrentEvent();
  // A tree that is left because it could not be built hands over nothing: it must not stay.
  if (!m_tree->m_filterChanged || !m_tree->IsBuilt()) return true;
  if (!m_list->SetFilter(m_tree->m_filter, true)) return false;
  m_tree->m_filterChanged = false;
  return true;
}

bool CTraceChildFrame::HandToTree() {
  const bool made = !m_tree;
  if (made) {
    ShellFaces& faces = m_main.Tessera().Faces();
    auto tree = std::make_unique<CProcView>(
        m_list->Document(), [&faces](TreeControlOwner& owner) { return faces.CreateTree(owner); });
    m_tree = static_cast<CProcView*>(AddView(std::move(tree)));
  }
  // A new tree is filled behind this.
  bool whole = !m_list->m_filterChanged || m_tree->SetFilter(m_list->m_filter, !made);
  // Before it shows, so that the list stays in view while it is built.
  whole = whole && m_tree->Build();
  if (!whole) {
    if (made) RemoveView(std::exchange(m_tree, nullptr));
    return false;
  }
  m_list->m_filterChanged = false;
  m_tree->m_currentEvent = m_list->CurrentEvent();
  return true;
}
