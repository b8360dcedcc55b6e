#include "tree/proc/proc_view.h"

#include <utility>

#include "documents/trace_panes.h"
#include "docview/frame.h"

CProcView::CProcView(CTraceDoc& document, const TreeControlMaker& makeTree)
    : CView(document),
      m_document(document),
      m_model(std::make_unique<ProcModel>(document, m_filter, static_cast<ProcItems*>(this))),
      m_tree(makeTree(*this)),
      m_generation(document.m_traces.Generation()) {
  MapCommands();
}

CProcView::~CProcView() = default;

void CProcView::OnInitialUpdate() {
  CView::OnInitialUpdate();
  // Later ones come to a hidden tree too.
  if (std::exchange(m_firstUpdate, false)) Build();
  if (m_currentEvent) {
    CTraceHint hint(m_currentEvent);
    OnUpdate(nullptr, kHintFollow, &hint);
  }
}

void CProcView::OnActivateView(bool activate, CView* activated, CView* deactivated) {
  m_active = activate;
  if (activate) {
    TellStatus();
  } else {
    TellRowCount(GetHost(), -1);
    TellFiltered(GetHost(), -1);
  }
  CView::OnActivateView(activate, activated, deactivated);
}

std::intptr_t CProcView::OnMessage(unsigned message, std::uintptr_t wParam, std::intptr_t lParam) {
  if (message != WM_TRACE_UPDATE) return CView::OnMessage(message, wParam, lParam);
  OnUpdate(nullptr, static_cast<unsigned>(wParam), reinterpret_cast<CObject*>(lParam));
  return 0;
}

CTraceEvent* CProcView::NodeOf(TreeItem item) const {
  return reinterpret_cast<CTraceEvent*>(m_tree->ItemData(item));
}

TraceEvent_i* CProcView::CurrentEvent() const {
  const CTraceEvent* const node = NodeOf(m_tree->SelectedItem());
  return node ? node->event : nullptr;
}

bool CProcView::SetFilter(const CTraceFilter& filter, bool rebuild) {
  CTraceFilter before = std::exchange(m_filter, filter);
  const bool changedBefore = std::exchange(m_filterChanged, false);
  if (!rebuild || RebuildTree()) return true;
  m_filter = std::move(before);
  m_filterChanged = changedBefore;
  return false;
}

bool CProcView::Build() {
  return m_built || m_document.m_loading || RebuildTree();
}

void CProcView::Follow(TraceEvent_i* event) {
  if (!m_document.m_synchronize || !event) return;
  CTraceHint hint(event);
  m_document.UpdateAllViews(this, kHintFollow, &hint);
}

// ---- what the control asks and tells

std::string CProcView::TreeItemText(TreeItemData data) {
  return data ? m_model->NodeLabel(*reinterpret_cast<const CTraceEvent*>(data)) : std::string();
}

void CProcView::OnTreeClicked(TreeItem item) {
  if (const CTraceEvent* const node = NodeOf(item)) Follow(node->event);
}

void CProcView::OnTreeDoubleClicked() {
  OnCommand(ID_VIEW_PROPERTIES);
}

void CProcView::OnTreeRightPressed(TreeItem item) {
  if (item) m_tree->SelectItem(item);
}

void CProcView::OnTreeContextMenu(int screenXPx, int screenYPx) {
  if (auto* frame = dynamic_cast<CMDIChildWnd*>(GetParentFrame()))
    frame->OnContextMenu(screenXPx, screenYPx);
}

// ---- the main window's panes

void CProcView::TellStatus() {
  TellRowCount(GetHost(), m_model->TraceCount());
  TellFiltered(GetHost(), m_filter.allTraces ? 0 : 1);
}
