#include "shell/child_frame.h"

#include <utility>

#include "docview/commands/command_ids.h"
#include "panes/trace_pane.h"
#include "settings/registry.h"
#include "shell/main_frame.h"
#include "shell/resource_ids.h"
#include "shell/stored_size.h"
#include "shell/tessera_app.h"
#include "tree/proc/proc_view.h"

CTraceChildFrame::CTraceChildFrame(CMainFrame& parent) : CMDIChildWnd(parent), m_main(parent) {
  AddPane(ID_VIEW_PROC, [this](CTraceDoc& document) {
    ShellFaces& faces = m_main.Tessera().Faces();
    return std::make_unique<CProcView>(
        document, [&faces](TreeControlOwner& owner) { return faces.CreateTree(owner); });
  });
}

void CTraceChildFrame::AddPane(unsigned command, PaneMaker make) {
  const std::size_t place = m_panes.size();
  m_panes.push_back({std::move(make)});
  MapCommand(
      command, [this, place] { TogglePane(place); },
      [this, place](CCmdUI& ui) {
        ui.Enable(HasList());
        ui.SetCheck(m_shown == place);
      });
}

bool CTraceChildFrame::HasList() const {
  return m_panes[kList].view || dynamic_cast<TracePane*>(GetActiveView());
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

// The views stay alive and go on receiving hints while they are hidden.
void CTraceChildFrame::TogglePane(std::size_t place) {
  CDocument* const document = GetActiveDocument();
  if (!document || !HasList()) return;
  if (!m_panes[kList].view) m_panes[kList].view = dynamic_cast<TracePane*>(GetActiveView());
  const std::size_t next = m_shown == place ? kList : place;
  TracePane& hidden = *m_panes[m_shown].view;
  if (!HandOver(hidden, m_panes[next])) return;
  m_shown = next;
  TracePane& shown = *m_panes[next].view;
  hidden.SetDlgCtrlID(kOtherPane);
  shown.SetDlgCtrlID(CView::kMainPane);
  // First, so that what the view scrolls to is on view in the size that it has from now on.
  ShowMainPane();
  SetActiveView(&shown, true);
  InitialUpdateFrame(document, true);
  shown.Control()->SetFocus();
}

// A fill that the person cancels leaves all as it was: the view that shows, the other one, and the
// mark of the filter, so that the next toggle hands it over.
bool CTraceChildFrame::HandOver(TracePane& from, Pane& to) {
  const bool made = !to.view;
  if (made) to.view = static_cast<TracePane*>(AddView(to.make(from.Document())));
  // A rebuild of the list puts its own current trace in the place of this one.
  to.view->m_currentEvent = from.CurrentEvent();
  // A pane that is left because it could not be filled hands over no filter: it must not stay.
  const bool filter = from.m_filterChanged && from.IsBuilt();
  // A new pane is filled by Build. It is filled before it shows, so that the other one stays in
  // view meanwhile.
  if ((!filter || to.view->SetFilter(from.m_filter, !made)) && to.view->Build()) {
    if (filter) from.m_filterChanged = false;
    return true;
  }
  if (made) RemoveView(std::exchange(to.view, nullptr));
  return false;
}
