#include "shell/child_frame.h"

#include <utility>

#include "docview/commands/command_ids.h"
#include "panes/trace_pane.h"
#include "settings/registry.h"
#include "shell/goto/go_to_dialog.h"
#include "shell/hits/hits_pane.h"
#include "shell/main_frame.h"
#include "shell/marks/marks_pane.h"
#include "shell/menus/resource_ids.h"
#include "shell/sizes/stored_size.h"
#include "shell/tessera_app.h"
#include "statistics/window/statistics_dialog.h"
#include "tree/proc/proc_view.h"

CTraceChildFrame::CTraceChildFrame(CMainFrame& parent)
    : CMDIChildWnd(parent),
      m_main(parent),
      m_filter([this](FilterLine& line) { return m_main.Tessera().Faces().CreateFilterLine(line); },
               [this] { return ShownPane(); }),
      m_beside(
          GetHost(),
          [this](BesideAreaOwner& owner) {
            return m_main.Tessera().Faces().CreateBesideArea(owner);
          },
          [this] { return ShownPane(); }),
      m_marks(
          GetHost(), [this] { return ShownPane(); },
          [this](const std::string& text) { m_main.SetNotice(text); }),
      m_overview(
          GetHost(),
          [this](OverviewStrip& strip) { return m_main.Tessera().Faces().CreateOverview(strip); },
          [this] { return ShownPane(); },
          [this](const std::string& text) { m_filter.TakeStep(text); }) {
  AddPane(ID_VIEW_PROC, [this](CTraceDoc& document) {
    ShellFaces& faces = m_main.Tessera().Faces();
    return std::make_unique<CProcView>(
        document, [&faces](TreeControlOwner& owner) { return faces.CreateTree(owner); });
  });
  MapFilter();
  MapBeside();
  MapGoTo();
  MapMarks();
  MapOverview();
  MapHits();
  MapProfiles();
  MapCommand(
      ID_VIEW_STATISTICS, [this] { OnStatistics(); },
      [this](CCmdUI& ui) {
        ui.Enable(HasList());
        ui.SetCheck(m_statistics && !m_statistics->Ended());
      });
}

CTraceChildFrame::~CTraceChildFrame() = default;

// A second time closes it.
void CTraceChildFrame::OnStatistics() {
  if (m_statistics && !m_statistics->Ended()) return m_statistics->OnCancel();
  m_statistics = std::make_unique<CStatisticsDlg>(
      m_main.Tessera().GetHost(), [this] { return ShownPane(); },
      [this](const std::string& text) { m_filter.TakeStep(text); });
}

void CTraceChildFrame::MapHits() {
  AddBeside(ID_EDIT_LISTHITS, nullptr, [this] {
    return std::make_unique<HitsPane>(
        GetHost(),
        [this](RowListOwner& owner) {
          return m_main.Tessera().Faces().CreateSideRows(owner, "Hits");
        },
        [this] { m_beside.OnEscape(); });
  });
}

void CTraceChildFrame::MapGoTo() {
  const std::pair<unsigned, CGoToDlg::Kind> kinds[] = {{ID_VIEW_GOTOTIME, CGoToDlg::Kind::Time},
                                                       {ID_VIEW_GOTOROW, CGoToDlg::Kind::Row}};
  for (const auto& [id, kind] : kinds)
    MapCommand(
        id, [this, kind = kind] { RunGoTo(*ShownPane(), kind); },
        [this](CCmdUI& ui) { ui.Enable(MayGoTo(ShownPane())); });
}

void CTraceChildFrame::MapBeside() {
  AddBeside(ID_VIEW_DETAILS, "Details", [this] {
    ShellFaces& faces = m_main.Tessera().Faces();
    return std::make_unique<DetailsPane>(
        GetHost(), [&faces](DetailsPane& pane) { return faces.CreateDetails(pane); },
        [this](const std::string& text) { m_filter.TakeStep(text); });
  });
  MapCommand(
      ID_VIEW_BESIDERIGHT,
      [this] {
        const bool right = m_beside.Edge() == BesideEdge::Right;
        m_beside.SetEdge(right ? BesideEdge::Below : BesideEdge::Right);
      },
      [this](CCmdUI& ui) {
        ui.Enable(HasList());
        ui.SetCheck(m_beside.Edge() == BesideEdge::Right);
      });
  MapCommand(
      ID_VIEW_NEXTAREA, [this] { NextArea(); }, [this](CCmdUI& ui) { ui.Enable(HasList()); });
}

// From the rows to the strip above them, then to the panes beside them, then back.
void CTraceChildFrame::NextArea() {
  if (m_overview.IsShown() && !m_overview.HasFocus() && !m_beside.HasFocus())
    m_overview.SetFocus();
  else
    m_beside.SwitchFocus();
}

void CTraceChildFrame::MapOverview() {
  MapCommand(
      ID_VIEW_OVERVIEW, [this] { m_overview.Toggle(); },
      [this](CCmdUI& ui) {
        ui.Enable(HasList());
        ui.SetCheck(m_overview.IsShown());
      });
}

void CTraceChildFrame::AddBeside(unsigned command, const char* stored, BesidePanes::MakePane make) {
  m_beside.Add(command, stored, std::move(make));
  MapCommand(
      command, [this, command] { m_beside.Toggle(command); },
      [this, command](CCmdUI& ui) {
        ui.Enable(HasList());
        ui.SetCheck(m_beside.IsOpen(command));
      });
}

void CTraceChildFrame::MapMarks() {
  m_marks.MapWith(
      [this](unsigned id, std::function<void()> run, std::function<void(CCmdUI&)> update) {
        MapCommand(id, std::move(run), std::move(update));
      });
  AddBeside(ID_VIEW_MARKS, "Marks", [this] {
    ShellFaces& faces = m_main.Tessera().Faces();
    return std::make_unique<MarksPane>(
        GetHost(),
        [&faces](RowListOwner& owner) { return faces.CreateSideRows(owner, "Marks and notes"); },
        [this](const std::string& text) { m_main.SetNotice(text); });
  });
}

void CTraceChildFrame::MapFilter() {
  MapCommand(
      ID_VIEW_FILTERTEXT, [this] { m_filter.Toggle(); },
      [this](CCmdUI& ui) {
        ui.Enable(HasList());
        ui.SetCheck(m_filter.IsShown());
      });
  MapCommand(
      ID_VIEW_FILTERBACK, [this] { m_filter.GoBack(); },
      [this](CCmdUI& ui) { ui.Enable(HasList() && m_filter.Line().CanGoBack()); });
  MapCommand(
      ID_VIEW_FILTERFORWARD, [this] { m_filter.GoForward(); },
      [this](CCmdUI& ui) { ui.Enable(HasList() && m_filter.Line().CanGoForward()); });
  for (const unsigned step :
       {+ID_FILTER_ONLYTHIS, +ID_FILTER_HIDETHIS, +ID_FILTER_ONLYTHREAD, +ID_FILTER_ONLYAROUND})
    MapCommand(step, [this, step] { m_filter.Take(step); });
}

TracePane* CTraceChildFrame::ShownPane() const {
  TracePane* const pane = m_panes[m_shown].view;
  return pane ? pane : dynamic_cast<TracePane*>(MainPane());
}

void CTraceChildFrame::OnCreate() {
  CMDIChildWnd::OnCreate();
  m_filter.OnCreate(*Face());
  m_beside.OnCreate(*Face());
  m_overview.OnCreate(*Face());
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
  // Only the window in front stores its state: another one loses its state when this one gets it. A
  // tab has the size of the main window, whatever the user chose for windows.
  if (IsActive() && !m_main.AreTabsShown()) StoreWindowMaximised(kRegTraceView, type);
}

bool CTraceChildFrame::BeginsMaximised() const {
  return ReadWindowMaximised(kRegTraceView);
}

bool CTraceChildFrame::OnEscape() {
  if (m_beside.OnEscape()) return true;
  FilterLine& line = m_filter.Line();
  if (!line.Percent()) return false;
  line.Stop();
  return true;
}

void CTraceChildFrame::OnContextMenu(int screenXPx, int screenYPx) {
  std::vector<MenuItem> more;
  if (const TracePane* const pane = ShownPane()) {
    for (const CellStep& step : pane->OfferedSteps()) more.push_back({step.command, step.label});
  }
  for (const unsigned id : {ID_EDIT_COPYROWSAS, ID_EDIT_MARK, ID_EDIT_MARKCOLOUR, ID_EDIT_NOTE})
    more.push_back(ItemIn(IDR_TRACEFILE, id));
  m_main.Face()->TrackPopupMenu(IDR_TRACE_POPUP, screenXPx, screenYPx, more);
}

// Hidden views stay alive and receive hints.
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
  // First, so that the view scrolls in its final size.
  ShowMainPane();
  SetActiveView(&shown, true);
  InitialUpdateFrame(document, true);
  shown.Control()->SetFocus();
  m_filter.OnPane();
  m_beside.OnPane();
  m_overview.OnPane();
}

// If the user cancels a fill nothing changes: not the shown view, not the other one, and not the
// mark of the filter, so that the next toggle passes the filter on.
bool CTraceChildFrame::HandOver(TracePane& from, Pane& to) {
  if (!from.FinishFilter()) return false;
  const bool made = !to.view;
  if (made) to.view = static_cast<TracePane*>(AddView(to.make(from.Document())));
  // A rebuild of the list replaces this current trace by its own.
  to.view->m_currentEvent = from.CurrentEvent();
  // A pane that is left because it could not be filled passes on no filter: the other pane would be
  // rebuilt, the user could cancel that, and the empty pane would stay.
  const bool filter = from.m_filterChanged && from.IsBuilt();
  // A new pane is filled by Build before it is shown, so that the other one stays visible
  // meanwhile.
  if ((!filter || to.view->SetFilter(from.m_filter, !made)) && to.view->Build()) {
    if (filter) from.m_filterChanged = false;
    return true;
  }
  if (made) RemoveView(std::exchange(to.view, nullptr));
  return false;
}
