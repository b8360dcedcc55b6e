#include "shell/details/details_pane.h"

#include <algorithm>
#include <utility>

#include "listview/details/detail_texts.h"
#include "listview/rows/cell_value.h"
#include "listview/source/open_source.h"
#include "panes/trace_pane.h"
#include "settings/globals.h"

namespace {

// A walk with a held key does not ask for the names of each stack on its way.
constexpr unsigned kStandsMs = 250;

}  // namespace

DetailsPane::DetailsPane(Host& host, const MakeFace& makeFace,
                         std::function<void(const std::string&)> takeStep)
    : m_host(host),
      m_takeStep(std::move(takeStep)),
      m_namer(host),
      m_look(host, [this] { Look(); }),
      m_face(makeFace(*this)) {}

void DetailsPane::OnPane(TracePane& pane) {
  m_pane = &pane;
  m_look.Ask();
}

void DetailsPane::OnShown(bool seen) {
  m_seen = seen;
  // Not followed meanwhile, so its trace may have gone.
  m_event = nullptr;
  m_told.reset();
  if (seen) Look();
}

void DetailsPane::OnRemoval(const CTraceHint& removed) {
  const auto has = [&](const TraceEvent_i* event) {
    return event && std::ranges::find(removed.m_events, event) != removed.m_events.end();
  };
  if (has(m_above)) m_above = nullptr;
  if (!has(m_event)) return;
  m_event = nullptr;
  m_state = State::Trimmed;
}

bool DetailsPane::IsShown(const TraceEvent_i* event) const {
  return m_state == State::Shown && event == m_event && m_pane->EventAbove() == m_above &&
         m_generation == m_pane->Document().m_traces.Generation() && m_utc == g_useUtc &&
         m_where == m_pane->m_filter.where;
}

void DetailsPane::Look() {
  if (!m_seen || !m_pane) return;
  // While a file is read its names belong to the thread that reads it.
  const TraceEvent_i* const event = m_pane->Document().m_loading ? nullptr : m_pane->CurrentEvent();
  if (event && IsShown(event)) return;
  if (event)
    Read(*event);
  else
    Leave();
  // Most of what a monitor adds changes nothing here.
  if (!event && m_told == m_state) return;
  m_told = m_state;
  m_face->Update();
}

// What was trimmed stays to be read by the user, until he clears all.
void DetailsPane::Leave() {
  m_event = m_above = nullptr;
  m_standing.reset();
  const bool cleared = m_pane->Document().m_traces.Generation() != m_generation;
  if (m_state == State::None || (m_state == State::Trimmed && !cleared)) return;
  m_state = State::None;
  m_rows.clear();
  m_body.Clear();
}

std::string DetailsPane::Message() const {
  switch (m_state) {
    case State::None:
      return "No trace has the focus";
    case State::Trimmed:
      return "This trace has been trimmed";
    case State::Shown:
      break;
  }
  return {};
}

// ---- reading a trace

void DetailsPane::Read(const TraceEvent_i& event) {
  m_state = State::Shown;
  m_event = &event;
  m_above = m_pane->EventAbove();
  m_generation = m_pane->Document().m_traces.Generation();
  m_utc = g_useUtc;
  m_where = m_pane->m_filter.where;
  ReadRows(event);
  ReadStack(event.GetStack());
  m_body.Read(event.GetText(), m_where);
}

void DetailsPane::ReadRows(const TraceEvent_i& event) {
  const NameMap& names = m_pane->Document().m_names;
  DetailTexts texts = DetailTextsOf(event, names);
  const auto cell = [&](Column column) { return CellValueOf(column, event, names); };
  m_rows.clear();
  AddRow("Time", std::move(texts.time));
  AddRow("Severity", std::move(texts.severity), cell(Column::Sev));
  AddRow("Component", std::move(texts.component), cell(Column::Component));
  AddRow("Category", std::move(texts.category), cell(Column::Category));
  AddRow("Count", std::move(texts.count), cell(Column::Count));
  AddRow("Attributes", std::move(texts.attributes), cell(Column::Attributes));
  AddRow("Machine", std::move(texts.machine), cell(Column::Machine));
  AddRow("Application", std::move(texts.application), cell(Column::Application));
  AddRow("PID", std::move(texts.pid), cell(Column::Pid));
  AddRow("TID", std::move(texts.tid), cell(Column::Tid));
  if (!texts.account.empty())
    AddRow("Account", texts.account, CellValue{WhereField::Account, texts.account});
  AddRow("Tic Count", std::move(texts.ticCount), cell(Column::TicCount));
  AddRow("Tic Difference", TicDifferenceText(event.GetTicCount(), m_above));
  AddRow("Source", std::move(texts.source), cell(Column::Source));
  m_rows.back().sourcePath = event.GetSourceFileName(names);
  m_rows.back().sourceLine = event.GetSourceLine();
}

void DetailsPane::AddRow(const char* caption, std::string value, std::optional<CellValue> cell) {
  // Nobody looks for what is not there.
  if (value.empty()) cell.reset();
  m_rows.push_back({caption, std::move(value), {}, std::move(cell)});
}

void DetailsPane::ReadStack(const std::string& stack) {
  m_firstFrame = m_rows.size();
  m_stack = stack;
  m_standing.reset();
  m_namer.Ask({}, {});
  for (std::string& line : StackLines(stack)) AddRow("", std::move(line));
  if (m_rows.size() == m_firstFrame) return;
  m_rows[m_firstFrame].caption = "Stack";
  m_standing = std::make_unique<HostTimer>(m_host, kStandsMs, [this] { NameStack(); });
}

void DetailsPane::NameStack() {
  m_standing.reset();
  if (m_state != State::Shown) return;
  m_namer.Ask(m_stack, [this, event = m_event](const StackNames& names) {
    if (event != m_event || m_state != State::Shown) return;
    m_rows.resize(m_firstFrame);
    for (const NamedFrame& frame : names.frames) {
      AddRow("", frame.text);
      m_rows.back().hint = frame.recorded;
      m_rows.back().sourcePath = frame.file;
      m_rows.back().sourceLine = frame.line;
    }
    for (const std::string& missing : names.missing) AddRow("", "(" + missing + ")");
    if (m_rows.size() > m_firstFrame) m_rows[m_firstFrame].caption = "Stack";
    m_face->UpdateRows();
  });
}

void DetailsPane::ShowAll() {
  if (m_body.HiddenBytes() == 0) return;
  m_body.ShowAll();
  m_face->Update();
}

void DetailsPane::SetPretty(bool on) {
  if (on == m_body.IsPretty()) return;
  m_body.SetPretty(on);
  m_face->Update();
}

// ---- what the user does with it

std::string DetailsPane::CopyText(const std::vector<std::size_t>& rows) const {
  std::string text;
  for (const std::size_t row : rows) {
    if (row >= m_rows.size()) continue;
    const std::string& caption = m_rows[row].caption;
    text += (caption.empty() ? "" : caption + ": ") + m_rows[row].value + "\n";
  }
  return text;
}

std::vector<CellStep> DetailsPane::StepsOf(std::size_t row) const {
  if (row >= m_rows.size() || !m_rows[row].cell || !m_pane) return {};
  return StepsOfCell(m_rows[row].cell, nullptr, m_pane->Document().m_names);
}

bool DetailsPane::HasSource(std::size_t row) const {
  return row < m_rows.size() && !m_rows[row].sourcePath.empty();
}

void DetailsPane::GotoSource(std::size_t row) const {
  if (!HasSource(row)) return;
  const DetailRow& from = m_rows[row];
  OpenSourceAt(_UTF2MBS(from.sourcePath), from.sourceLine);
}
