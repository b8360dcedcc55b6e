#include "shell/filterline/frame_filter.h"

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>

#include "docview/dialogs/dialog.h"
#include "panes/document_names.h"
#include "panes/trace_pane.h"
#include "panes/tree_as_text.h"
#include "tree/filter/text/filter_of_text.h"
#include "where/steps/cell_step.h"

namespace {

// How long the names are looked at before a menu opens, and after its command was chosen; and how
// many steps a search in one name may take.
constexpr std::chrono::milliseconds kMenuTime(20), kTreeTime(1000);
constexpr std::uint32_t kMenuSteps = 2'000, kTreeSteps = 100'000;

}  // namespace

void FrameFilter::OnCreate(ChildFrameFace& window) {
  m_window = &window;
  if (IsFilterLineShown()) Show();
}

void FrameFilter::OnPane() {
  TracePane* const pane = m_shown();
  if (!pane) return;
  pane->m_onStatus = [this] { m_line.OnStatus(); };
  m_line.SetDocument(pane->Document());
}

void FrameFilter::Show() {
  if (m_face || !m_window) return;
  m_face = m_makeFace(m_line);
  m_line.SetFace(m_face.get());
  m_window->ShowBar(m_face.get());
  OnPane();
}

void FrameFilter::Toggle() {
  if (m_face && m_face->HasFocus()) return PutAwayFilterLine();
  Show();
  StoreFilterLineShown(true);
  if (m_face) m_face->SetFocus();
}

// What is put away has no window. The face may be handling a key of the user.
void FrameFilter::PutAwayFilterLine() {
  if (!m_face || !m_line.Release()) return;
  StoreFilterLineShown(false);
  const std::unique_ptr<FilterLineFace> gone = std::exchange(m_face, nullptr);
  m_line.SetFace(nullptr);
  m_window->ShowBar(nullptr);
  TracePane* const pane = m_shown();
  if (!pane) return;
  pane->m_onStatus = nullptr;
  pane->Control()->SetFocus();
}

void FrameFilter::GoBack() {
  if (m_line.GoBack()) Show();
}

void FrameFilter::GoForward() {
  if (m_line.GoForward()) Show();
}

void FrameFilter::Take(unsigned command) {
  const TracePane* const pane = m_shown();
  if (!pane) return;
  const std::vector<CellStep>& steps = pane->OfferedSteps();
  const auto step = std::ranges::find(steps, command, &CellStep::command);
  // The rebuild may replace what the pane offers.
  if (step != steps.end() && m_line.AddStep(std::string(step->text))) Show();
}

void FrameFilter::TakeStep(const std::string& text) {
  if (m_shown() && m_line.AddStep(text)) Show();
}

bool FrameFilter::Restore(const std::string& text) {
  if (!text.empty()) Show();
  if (m_line.ApplyText(text)) return true;
  m_line.Edit(text);
  return false;
}

bool FrameFilter::Restore(const std::string& text, const std::string& marks) {
  TracePane* const pane = m_shown();
  if (!pane) return false;
  CTraceFilter tree = pane->m_filter;
  const bool marked = MarksOf(marks, tree);
  tree.where = pane->m_filter.where;
  if (!pane->SetFilter(tree, true)) return false;
  pane->m_filterChanged = true;
  const std::optional<std::string> both = marked ? text : WithStep(text, marks);
  return both && Restore(*both);
}

// False: all are set. While a file is loaded its names are not all known.
bool FrameFilter::MarksOf(const std::string& marks, CTraceFilter& tree) const {
  const CTraceDoc& document = m_shown()->Document();
  tree.MergeDocumentNames(document);
  tree.ShowAll();
  if (marks.empty()) return true;
  WhereError error;
  const WhereProgramPtr program = WhereProgram::Compile(marks, error);
  LookTime time(kTreeTime, kTreeSteps);
  return program && !document.m_loading &&
         FilterOfText(program->Expr(), FilterNamesOf(document), tree, error, &time);
}

WhereProgramPtr FrameFilter::WhereInForce() const {
  const TracePane* const pane = m_shown();
  return pane ? pane->m_filter.where : nullptr;
}

bool FrameFilter::ApplyWhere(const WhereProgramPtr& program) {
  return m_shown() && m_shown()->SetWhere(program);
}

std::optional<int> FrameFilter::WhereProgress() const {
  const TracePane* const pane = m_shown();
  return pane ? pane->FilterProgress() : std::nullopt;
}

void FrameFilter::CancelWhere() {
  if (TracePane* const pane = m_shown()) pane->CancelFilter();
}

// ---- the filter dialog's tree

void FrameFilter::TakeTree(const std::string& text) {
  std::string why;
  if (m_line.TakeTree(text, &why)) return Show();
  if (!why.empty()) m_shown()->GetHost().MessageBox({.text = std::move(why)});
}

CTraceFilter FrameFilter::FilterInForce() const {
  const TracePane* const pane = m_shown();
  return pane ? pane->m_filter : CTraceFilter();
}

bool FrameFilter::ApplyFilter(const CTraceFilter& filter) {
  TracePane* const pane = m_shown();
  if (!pane || !pane->SetFilter(filter, true)) return false;
  pane->m_filterChanged = true;
  return true;
}

bool FrameFilter::IsTree(const WhereExpr& expr, WhereError& error) const {
  LookTime time(kMenuTime, kMenuSteps);
  CTraceFilter tree;
  return TreeOf(expr, tree, error, time) || time.IsOver();
}

bool FrameFilter::OpenAsTree(const WhereExpr& expr, WhereError& error) {
  TracePane* const pane = m_shown();
  CTraceFilter tree;
  {
    const CWaitCursor wait(pane->GetHost());
    LookTime time(kTreeTime, kTreeSteps);
    if (!TreeOf(expr, tree, error, time)) return false;
  }
  if (RunFilterDialog(pane->Document(), tree, nullptr) == CDialog::kIdOk)
    m_line.BecomeTree(std::move(tree));
  return true;
}

bool FrameFilter::TreeOf(const WhereExpr& expr, CTraceFilter& tree, WhereError& error,
                         LookTime& time) const {
  const TracePane* const pane = m_shown();
  if (!pane) return false;
  tree = pane->m_filter;
  tree.MergeDocumentNames(pane->Document());
  return FilterOfText(expr, FilterNamesOf(pane->Document()), tree, error, &time);
}

std::vector<std::string> FrameFilter::WhereNamesOf(WhereField field) const {
  const TracePane* const pane = m_shown();
  return pane ? DocumentNames(pane->Document(), field) : std::vector<std::string>();
}
