#include "tree/proc/proc_view.h"

#include <utility>

#include "docview/commands/command_ids.h"
#include "panes/row_mark.h"
#include "tree/proc/node_value.h"

CProcView::CProcView(CTraceDoc& document, const TreeControlMaker& makeTree)
    : TracePane(document),
      m_model(std::make_unique<ProcModel>(document, m_filter, static_cast<ProcItems*>(this))),
      m_tree(makeTree(*this)),
      m_generation(document.m_traces.Generation()) {}

CProcView::~CProcView() = default;

void CProcView::OnInitialUpdate() {
  CView::OnInitialUpdate();
  // A hidden tree gets later updates too.
  if (std::exchange(m_firstUpdate, false)) Build();
  if (m_currentEvent) GoTo(nullptr, m_currentEvent);
}

CTraceEvent* CProcView::NodeOf(TreeItem item) const {
  return reinterpret_cast<CTraceEvent*>(m_tree->ItemData(item));
}

TraceEvent_i* CProcView::CurrentEvent() const {
  const CTraceEvent* const node = NodeOf(m_tree->SelectedItem());
  return node ? node->event : nullptr;
}

void CProcView::VisitPage(const VisitTrace& visit) const {
  if (const TraceEvent_i* const event = CurrentEvent()) visit(*event);
}

const TraceEvent_i* CProcView::EventAbove() const {
  const TreeItem item = m_tree->SelectedItem();
  const CTraceEvent* const above =
      item ? NodeOf(m_tree->Walk(item, TreeStep::PreviousVisible)) : nullptr;
  return above ? above->event : nullptr;
}

bool CProcView::Build() {
  return m_built || m_document.m_loading || RebuildTree();
}

// ---- the interface to the control

std::string CProcView::TreeItemText(TreeItemData data) {
  return data ? m_model->NodeLabel(*reinterpret_cast<const CTraceEvent*>(data)) : std::string();
}

// Items above the traces have one of those below them as their event.
std::optional<RowMark> CProcView::TreeItemMark(TreeItemData data) {
  const auto* const node = reinterpret_cast<const CTraceEvent*>(data);
  if (!node || node->Kind() > NodeKind::Block || !node->event) return std::nullopt;
  return RowMarkOf(m_document, *node->event);
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
  const CTraceEvent* const node = NodeOf(m_tree->SelectedItem());
  const TraceEvent_i* const event = node ? node->event : nullptr;
  std::optional<CellValue> cell;
  if (event) cell = NodeValueOf(node->Kind(), *event, m_document.m_names);
  // Below an application or a machine there are several threads.
  const bool oneThread = node && node->Kind() <= NodeKind::Thread;
  std::vector<CellStep> steps = StepsOfCell(cell, oneThread ? event : nullptr, m_document.m_names);
  ShowContextMenu(screenXPx, screenYPx, std::move(steps));
}
