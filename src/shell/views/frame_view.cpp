#include "shell/views/frame_view.h"

#include <algorithm>
#include <utility>

#include "documents/trace_file_doc.h"
#include "documents/trace_realtime_doc.h"
#include "listview/rows/trace_view.h"
#include "panes/trace_pane.h"
#include "shell/filterline/frame_filter.h"
#include "shell/views/focused_row.h"
#include "tree/filter/text/filter_text.h"
#include "views/stored_views.h"
#include "views/view_trial.h"

namespace {

constexpr unsigned kLookMs = 30;

std::string SourceOf(const CTraceDoc& document) {
  if (const auto* const monitor = dynamic_cast<const CTraceRealtimeDoc*>(&document)) {
    std::string machine = monitor->Machine();
    std::ranges::transform(machine, machine.begin(), [](char c) {
      return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    return machine.empty() ? machine : "monitor:" + machine;
  }
  const bool file = dynamic_cast<const CTraceFileDoc*>(&document) != nullptr;
  return file ? document.GetPathName() : std::string();
}

Bytes FileOf(const CTraceDoc& document) {
  const auto* const file = dynamic_cast<const CTraceFileDoc*>(&document);
  return file ? file->FileBytes() : Bytes();
}

bool IsSame(const StoredView& view, const CTraceDoc& document) {
  return view.file.heads.empty() || IsSameFile(view.file, FileOf(document));
}

std::string Listed(const std::vector<std::string>& names) {
  std::string all;
  for (const std::string& name : names) all += (all.empty() ? "" : ", ") + name;
  return all;
}

// The marks of the filter dialog; nothing where no text can say them. The file may have grown when
// they come back, and a profile is for other files: names that are not there yet are shown.
std::optional<std::string> MarksOf(const TracePane& pane) {
  if (pane.m_filter.allTraces) return std::string();
  return TextOfFilter(pane.m_filter, {.names = pane.Document().m_names, .mayGrow = true});
}

std::string WhereOf(const TracePane* pane) {
  return pane && pane->m_filter.where ? pane->m_filter.where->Text() : std::string();
}

}  // namespace

CTraceDoc* FrameView::Document() const {
  const CTraceView* const list = m_frame.ListView();
  return list && list->GetDocument() ? &list->Document() : nullptr;
}

// ---- coming back

void FrameView::OnShown() {
  CTraceDoc* const document = Document();
  if (!document || m_shown) return;
  m_shown = true;
  if (!AreViewsRemembered()) return;
  m_source = SourceOf(*document);
  if (m_source.empty()) return;
  m_restored = true;
  if (document->Frames().size() > 1) return;
  std::string why;
  m_view = ReadStoredView(m_source, &why);
  if (!why.empty()) m_frame.ShowNotice("The view did not come back: " + why);
  if (!m_view) return;
  ApplyLook(m_view->state);
  if (HasFailedTrial(*m_view)) {
    m_frame.ShowNotice("The view did not come back: the program ended while it was applied");
    m_view.reset();
    return;
  }
  m_restored = false;
  if (!document->m_loading) return Restore();
  m_watches = true;
  m_frame.ListView()->Watch(*this);
}

void FrameView::OnShownTraces() {
  const CTraceDoc* const document = Document();
  if (document && !document->m_loading) m_loaded.Ask();
}

void FrameView::StopWatching() {
  CTraceView* const list = m_frame.ListView();
  if (std::exchange(m_watches, false) && list) list->Unwatch(*this);
}

bool FrameView::HasUserActed() const {
  const TracePane* const pane = m_frame.ShownPane();
  const FilterLine& line = m_frame.Filter().Line();
  return m_chosen || m_frame.IsTreeShown() || !line.Text().empty() ||
         (pane && !pane->m_filter.ShowsAll());
}

void FrameView::Restore() {
  StopWatching();
  if (std::exchange(m_restored, true)) return;
  const std::optional<StoredView> view = std::exchange(m_view, std::nullopt);
  const CTraceDoc* const document = Document();
  if (!view || !document || !IsSame(*view, *document) || HasUserActed()) return;
  const bool nothing = view->state.filter.value_or("").empty() &&
                       view->state.marks.value_or("").empty() && !view->state.row &&
                       !view->state.tree.value_or(false);
  if (nothing) return;
  m_view = view;
  BeginViewTrial(m_source);
  m_trial = std::make_unique<HostTimer>(document->GetHost(), kLookMs, [this] { EndTrial(); });
  RestoreTraces(*view);
}

// A box may stand above it, and the window may be closed below.
void FrameView::RestoreTraces(const StoredView& view) {
  const bool chosen = m_frame.ShownPane() && m_frame.ShownPane()->CurrentEvent();
  ApplyFilter(view.state);
  // While the text is being applied the row is looked for as well, and a row that the user chooses
  // ends that.
  if (view.state.row && !chosen) GoToRow(*view.state.row);
  ApplyTree(view.state);
}

void FrameView::EndTrial() {
  const TracePane* const pane = m_frame.ShownPane();
  if (pane && pane->FilterProgress()) return;
  EndViewTrial(m_source);
  m_view.reset();
  m_trial.reset();
}

void FrameView::GoToRow(const ViewRow& row) {
  TraceEvent_i* const trace = FindRow(row, Document()->m_traces);
  if (!trace) return;
  CTraceHint hint(trace);
  m_frame.ShownPane()->OnUpdate(nullptr, kHintFollow, &hint);
}

void FrameView::OnDestroy() {
  StopWatching();
  if (std::exchange(m_trial, nullptr)) EndViewTrial(m_source);
  const CTraceDoc* const document = Document();
  if (!document || m_source.empty() || !m_restored || !AreViewsRemembered()) return;
  std::string why;
  if (!StoreView(Kept(*document), &why)) m_frame.ShowNotice("The view was not kept: " + why);
}

// While the filter text of the view is being applied, its row has not come back yet.
StoredView FrameView::Kept(const CTraceDoc& document) const {
  StoredView view{.source = m_source};
  if (const Bytes file = FileOf(document); !file.empty()) view.file = PrintOfFile(file);
  view.state = Collect();
  const bool comes = m_view && m_view->state.filter.value_or("") == view.state.filter;
  if (comes && !view.state.row) view.state.row = m_view->state.row;
  return view;
}

// ---- the state of the window

ViewState FrameView::Collect() const {
  CTraceView* const list = m_frame.ListView();
  const TracePane* const pane = m_frame.ShownPane();
  ViewState state;
  if (!list || !pane) return state;
  state.columns = list->Columns().State();
  state.filter = WhereOf(pane);
  state.marks = MarksOf(*pane);
  state.colours = list->Colours().State();
  state.tree = m_frame.IsTreeShown();
  state.panes = m_frame.OpenPanes();
  const CTraceDoc& document = list->Document();
  if (!document.m_loading && !FileOf(document).empty())
    state.row = RowOf(pane->CurrentEvent(), document.m_traces);
  return state;
}

std::string FrameView::Apply(const ViewState& state) {
  if (!m_frame.ListView()) return "There is no window for it.\n";
  m_chosen = true;
  return ApplyLook(state) + ApplyFilter(state) + ApplyTree(state);
}

void FrameView::ApplyStandard() {
  CTraceView* const list = m_frame.ListView();
  if (!list) return;
  ViewState state;
  state.columns = list->Columns().Standard();
  state.filter.emplace();
  state.marks.emplace();
  list->Colours().DropOwn();
  list->List().Repaint();
  Apply(state);
}

std::string FrameView::ApplyLook(const ViewState& state) {
  CTraceView& list = *m_frame.ListView();
  std::string missed;
  if (!state.columns.empty()) {
    const auto unknown = list.Columns().SetState(state.columns);
    if (!unknown.empty()) missed += "There are no columns " + Listed(unknown) + ".\n";
  }
  if (state.colours) {
    list.Colours().SetState(*state.colours);
    list.List().Repaint();
  }
  if (state.panes) {
    const auto unknown = m_frame.OpenPanes(*state.panes);
    if (!unknown.empty()) missed += "There are no panes " + Listed(unknown) + ".\n";
  }
  return missed;
}

std::string FrameView::ApplyFilter(const ViewState& state) {
  FrameFilter& filter = m_frame.Filter();
  const TracePane& pane = *m_frame.ShownPane();
  const std::string inForce = WhereOf(&pane), text = state.filter.value_or(inForce);
  const bool marks = state.marks && state.marks != MarksOf(pane);
  if (!marks && text == inForce) return {};
  if (marks ? filter.Restore(text, *state.marks) : filter.Restore(text)) return {};
  return "The filter text was not applied. " + filter.Line().Message() + "\n";
}

std::string FrameView::ApplyTree(const ViewState& state) {
  if (!state.tree || *state.tree == m_frame.IsTreeShown() || m_frame.ToggleTree()) return {};
  return std::string(*state.tree ? "The tree" : "The list") + " was not shown.\n";
}
