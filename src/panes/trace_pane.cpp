#include "panes/trace_pane.h"

#include <algorithm>
#include <utility>

#include "documents/trace_panes.h"
#include "docview/frame.h"

TracePane::TracePane(CTraceDoc& document) : CView(document), m_document(document) {
  MapCommands();
}

TracePane::~TracePane() = default;

bool TracePane::SetFilter(const CTraceFilter& filter, bool rebuild) {
  if (rebuild && !FinishFilter()) return false;
  auto noted = MarksFor(filter.where);
  CTraceFilter before = std::exchange(m_filter, filter);
  m_filter.noted = std::move(noted);
  const bool changedBefore = std::exchange(m_filterChanged, false);
  if (!rebuild || Rebuild()) return true;
  m_filter = std::move(before);
  m_filterChanged = changedBefore;
  return false;
}

bool TracePane::SetWhere(WhereProgramPtr where) {
  auto notedBefore = MarksFor(where);
  WhereProgramPtr before = std::exchange(m_filter.where, std::move(where));
  m_filter.noted.swap(notedBefore);
  if (Rebuild()) {
    m_filterChanged = true;
    return true;
  }
  m_filter.where = std::move(before);
  m_filter.noted = std::move(notedBefore);
  return false;
}

std::shared_ptr<const WhereMarks> TracePane::MarksFor(const WhereProgramPtr& where) {
  if (!where || !where->UsesMarks()) return nullptr;
  std::string why;
  auto marks = m_document.Marks(&why);
  if (!why.empty()) GetHost().MessageBox({why, BoxIcon::None, BoxButtons::Ok});
  return marks;
}

// ---- hints

std::intptr_t TracePane::OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  if (message != WM_TRACE_UPDATE) return CView::OnMessage(message, wParam, lParam);
  OnUpdate(nullptr, static_cast<unsigned>(wParam), reinterpret_cast<CObject*>(lParam));
  return 0;
}

void TracePane::OnUpdate(CView* sender, unsigned hint, CObject* object) {
  const auto* traces = dynamic_cast<const CTraceHint*>(object);
  switch (hint) {
    case kHintOptions:
      OnOptions();
      Tell(&PaneWatcher::OnShownTraces);
      break;
    case kHintReady:
      m_filter.noted = MarksFor(m_filter.where);
      OnReady();
      Tell(&PaneWatcher::OnShownTraces);
      break;
    case kHintAdded:
      if (!traces) break;
      AddTraces(*traces);
      Tell(&PaneWatcher::OnShownTraces);
      break;
    case kHintTrimmed:
      if (!traces) break;
      if (std::ranges::find(traces->m_events, m_currentEvent) != traces->m_events.end())
        m_currentEvent = nullptr;
      TellRemoval(*traces);
      RemoveTraces(*traces);
      Tell(&PaneWatcher::OnShownTraces);
      break;
    case kHintMarked:
      RepaintHits();
      Tell(&PaneWatcher::OnShownTraces);
      break;
    case kHintFollow:
      if (traces && !traces->m_events.empty()) FollowTrace(sender, *traces->m_events.front());
      break;
    default:
      break;
  }
}

void TracePane::GoTo(CView* sender, TraceEvent_i* event) {
  CTraceHint hint(event);
  OnUpdate(sender, kHintFollow, &hint);
}

void TracePane::Follow(TraceEvent_i* event) {
  if (!m_document.m_synchronize || !event) return;
  CTraceHint hint(event);
  m_document.UpdateAllViews(this, kHintFollow, &hint);
}

// ---- the frame and the main window's panes

void TracePane::OnActivateView(bool activate, CView* activated, CView* deactivated) {
  m_active = activate;
  if (activate) {
    ReportStatus();
  } else {
    ReportRowCount(GetHost(), -1);
    ReportFiltered(GetHost(), -1);
  }
  CView::OnActivateView(activate, activated, deactivated);
}

void TracePane::ReportStatus() {
  Tell(&PaneWatcher::OnShownTraces);
  if (!m_active) return;
  ReportRowCount(GetHost(), TraceCount());
  ReportFiltered(GetHost(), m_filter.ShowsAll() ? 0 : 1);
  if (m_onStatus) m_onStatus();
}

void TracePane::ReportCount() {
  if (m_active) ReportRowCount(GetHost(), TraceCount());
}

void TracePane::ShowContextMenu(int screenXPx, int screenYPx, std::vector<CellStep> offered) {
  m_offered = std::move(offered);
  if (auto* frame = dynamic_cast<CMDIChildWnd*>(GetParentFrame()))
    frame->OnContextMenu(screenXPx, screenYPx);
}

void TracePane::ShowHits(bool on) {
  if (!on && !m_hits) return;
  m_hits = on ? std::make_unique<FindHits>() : nullptr;
  RepaintHits();
}
