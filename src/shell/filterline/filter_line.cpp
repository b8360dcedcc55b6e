#include "shell/filterline/filter_line.h"

#include <algorithm>
#include <utility>

#include "base/fail_with.h"
#include "where/steps/cell_step.h"
#include "where/text/where_lexer.h"

namespace {

bool AreBlanks(std::string_view text) {
  return std::ranges::all_of(text, IsWhereBlank);
}

// Characters, not bytes: what the user counts.
std::size_t ColumnOf(std::string_view text, std::size_t place) {
  const std::string_view before = text.substr(0, place);
  return 1 + static_cast<std::size_t>(std::ranges::count_if(
                 before, [](char c) { return (static_cast<unsigned char>(c) & 0xC0) != 0x80; }));
}

std::string AtColumn(std::string_view text, const WhereError& error) {
  return "Column " + std::to_string(ColumnOf(text, error.place)) + ": " + error.reason;
}

}  // namespace

bool FilterLine::IsBlank() const {
  return AreBlanks(m_text);
}

void FilterLine::Put(std::string text) {
  m_text = std::move(text);
  std::ranges::replace(m_text, '\n', ' ');
  std::ranges::replace(m_text, '\r', ' ');
  m_error.reset();
  m_program = nullptr;
  if (IsBlank()) return;
  WhereError error;
  m_program = WhereProgram::Compile(m_text, error);
  if (!m_program) m_error = std::move(error);
}

void FilterLine::Edit(std::string text) {
  m_recentPlace = 0;
  Put(std::move(text));
  UpdateFace();
}

FilterLine::State FilterLine::GetState() const {
  if (m_error) return State::Wrong;
  const WhereProgramPtr inForce = m_owner.WhereInForce();
  const bool same = IsBlank() ? !inForce : inForce && inForce->Text() == m_text;
  return same ? State::InForce : State::Edited;
}

std::string FilterLine::Message() const {
  switch (GetState()) {
    case State::Wrong:
      return AtColumn(m_text, *m_error);
    case State::Edited:
      return IsBlank() ? "Enter shows all traces again." : "Enter applies this text.";
    case State::InForce:
      break;
  }
  if (const auto percent = Percent())
    return "Filtering: " + std::to_string(*percent) + " %. Esc stops it.";
  const std::string note = m_source.Note();
  const std::string about =
      IsBlank() ? "For example: severity >= warn and text contains \"retry\"" : "Applied.";
  return note.empty() ? about : about + " " + note;
}

void FilterLine::SetAtSource(bool on) {
  m_source.Set(on);
  UpdateFace();
}

bool FilterLine::Apply() {
  return ApplyWith(std::nullopt);
}

bool FilterLine::ApplyWith(std::optional<std::string> textBefore) {
  if (m_error) return false;
  const std::string text = IsBlank() ? std::string() : m_text;
  if (GetState() != State::InForce) {
    if (!ApplyWhere({m_steps, std::move(textBefore)})) return false;
    m_source.Send(m_program);
  } else if (m_pending) {
    if (!textBefore || !m_pending->text) m_pending->text = std::move(textBefore);
  }
  m_steps.Go(text);
  Settle();
  NoteRecentFilter(text);
  m_recentPlace = 0;
  UpdateFace();
  return true;
}

bool FilterLine::ApplyText(std::string text) {
  std::string before = m_text;
  Put(std::move(text));
  if (ApplyWith(before)) return true;
  Put(std::move(before));
  UpdateFace();
  return false;
}

bool FilterLine::Release() {
  // A text that is being applied is a step too: it was not stopped.
  m_applying = true;
  const bool released = !m_owner.WhereInForce() || m_owner.ApplyWhere(nullptr);
  m_applying = false;
  if (!released) return false;
  m_source.Send(nullptr);
  m_pending.reset();
  m_steps.Go(std::string());
  UpdateFace();
  return true;
}

// ---- while a text is being applied

std::optional<int> FilterLine::Percent() const {
  const std::optional<int> progress = m_owner.WhereProgress();
  if (!progress) return std::nullopt;
  return *progress / 10;
}

void FilterLine::Stop() {
  m_owner.CancelWhere();
  OnStatus();
}

void FilterLine::Escape() {
  if (Percent())
    Stop();
  else
    PutAway();
}

void FilterLine::OnStatus() {
  Settle();
  UpdateFace();
}

// Until the steps are those of this text, its end settles nothing. A second text may come before
// the first one is applied: a stop leads back to the one that was in force.
bool FilterLine::ApplyWhere(PendingText now) {
  m_applying = true;
  const bool works = m_owner.ApplyWhere(m_program);
  m_applying = false;
  if (!works) return false;
  if (m_pending) {
    now.steps = std::move(m_pending->steps);
    if (now.text && m_pending->text) now.text = std::move(m_pending->text);
  }
  now.program = m_program;
  m_pending = std::move(now);
  return true;
}

// Has it been applied or stopped?
void FilterLine::Settle() {
  if (!m_pending || m_applying || m_owner.WhereProgress()) return;
  const PendingText ended = std::move(*m_pending);
  m_pending.reset();
  if (m_owner.WhereInForce() == ended.program) return;
  m_source.Send(m_owner.WhereInForce());
  m_steps = ended.steps;
  // What the user has typed meanwhile stays.
  const bool untouched = ended.program ? ended.program->Text() == m_text : IsBlank();
  if (ended.text && untouched) Put(*ended.text);
}

// ---- steps

bool FilterLine::GoBack() {
  return CanGoBack() && Walk(true);
}

bool FilterLine::GoForward() {
  return CanGoForward() && Walk(false);
}

bool FilterLine::Walk(bool back) {
  const FilterSteps::Step to = back ? m_steps.Before() : m_steps.Behind();
  FilterSteps::Tree left;
  std::string before = m_text;
  Put(to.text);
  bool applied = true;
  if (to.tree) {
    left = std::make_shared<const CTraceFilter>(m_owner.FilterInForce());
    CTraceFilter filter = *to.tree;
    filter.where = m_program;
    applied = m_owner.ApplyFilter(filter);
  } else if (GetState() != State::InForce) {
    applied = ApplyWhere({m_steps, before});
  } else if (m_pending && !m_pending->text) {
    m_pending->text = before;
  }
  if (applied) {
    m_source.Send(m_program);
    back ? m_steps.Back(std::move(left)) : m_steps.Forward(std::move(left));
    NoteRecentFilter(m_text);
    m_recentPlace = 0;
    Settle();
  } else {
    Put(std::move(before));
  }
  UpdateFace();
  return applied;
}

bool FilterLine::AddStep(const std::string& step) {
  const WhereProgramPtr inForce = m_owner.WhereInForce();
  std::optional<std::string> both = WithStep(inForce ? inForce->Text() : std::string(), step);
  return both && ApplyText(std::move(*both));
}

// ---- the filter dialog's tree

bool FilterLine::ApplyTree(CTraceFilter tree, std::string text) {
  auto before = std::make_shared<const CTraceFilter>(m_owner.FilterInForce());
  std::string typed = m_text;
  Put(std::move(text));
  tree.where = m_program;
  const bool applied = !m_error && m_owner.ApplyFilter(tree);
  if (applied) {
    m_source.Send(m_program);
    m_steps.Go(m_text, std::move(before));
    NoteRecentFilter(m_text);
    m_recentPlace = 0;
  } else {
    Put(std::move(typed));
  }
  UpdateFace();
  return applied;
}

bool FilterLine::TakeTree(const std::string& text, std::string* why) {
  CTraceFilter all = m_owner.FilterInForce();
  const std::string inForce = all.where ? all.where->Text() : std::string();
  std::optional<std::string> both = text.empty() ? inForce : WithStep(inForce, text);
  if (!both) return FailWith(why, "The tree and the filter text are too long for one text.");
  all.ShowAll();
  return ApplyTree(std::move(all), std::move(*both));
}

bool FilterLine::BecomeTree(CTraceFilter tree) {
  return ApplyTree(std::move(tree), std::string());
}

std::string FilterLine::WhyNoTree() const {
  if (m_error) return Message();
  if (!m_program) return "There is no filter text.";
  WhereError error;
  if (m_owner.IsTree(m_program->Expr(), error)) return {};
  return AtColumn(m_text, error);
}

bool FilterLine::OpenAsTree(std::string* why) const {
  if (!m_program) return FailWith(why, WhyNoTree());
  WhereError error;
  return m_owner.OpenAsTree(m_program->Expr(), error) || FailWith(why, AtColumn(m_text, error));
}

// ---- completion

std::vector<WhereCompletion> FilterLine::CompletionsAt(std::size_t caret) const {
  return WhereCompletions(m_text, caret,
                          [this](WhereField field) { return m_owner.WhereNamesOf(field); });
}

std::size_t FilterLine::Complete(const WhereCompletion& completion) {
  const std::size_t from = std::min(completion.replaceFrom, m_text.size());
  const std::size_t to = std::clamp(completion.replaceTo, from, m_text.size());
  std::string text = m_text;
  text.replace(from, to - from, completion.insert);
  std::size_t caret = from + completion.insert.size();
  // What follows a word begins behind a blank.
  if (completion.kind != WhereCompletion::Kind::Sign && caret == text.size()) text += ' ';
  if (caret < text.size() && text[caret] == ' ') ++caret;
  Edit(std::move(text));
  return caret;
}

// ---- recent texts

bool FilterLine::ShowOlder() {
  if (m_recentPlace == 0) {
    m_recent = RecentFilters();
    m_typed = m_text;
    // The text that stands there already would be no step.
    if (!m_recent.empty() && m_recent.front() == m_text) m_recent.erase(m_recent.begin());
  }
  return m_recentPlace < m_recent.size() && ShowRecent(m_recentPlace + 1);
}

bool FilterLine::ShowNewer() {
  return m_recentPlace > 0 && ShowRecent(m_recentPlace - 1);
}

bool FilterLine::ShowRecent(std::size_t place) {
  m_recentPlace = place;
  Put(place == 0 ? m_typed : m_recent[place - 1]);
  UpdateFace();
  return true;
}
