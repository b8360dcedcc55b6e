#include "shell/goto/go_to_dialog.h"

#include "listview/time/zone_text.h"
#include "settings/globals.h"
#include "shell/goto/go_to_text.h"

namespace {

std::optional<std::int64_t> MomentOfTrace(const TraceEvent_i* trace) {
  if (!trace) return std::nullopt;
  return MomentOfStamp(std::uint64_t{trace->GetDate()} << 32 | trace->GetTime());
}

}  // namespace

CGoToDlg::CGoToDlg(TracePane& pane, Kind kind)
    : CDialog(pane.GetHost()), m_pane(pane), m_kind(kind) {}

const char* CGoToDlg::Title() const {
  return m_kind == Kind::Time ? "Go to Time" : "Go to Row";
}

const char* CGoToDlg::Label() const {
  return m_kind == Kind::Time ? "&Time:" : "&Row:";
}

std::string CGoToDlg::Hint() const {
  if (m_kind == Kind::Row) return "4711, 50%, or -1 for the last row";
  return "2026-11-21 09:41:07.123, 09:41:07, +5s or -1m from the row with the focus, end - 5m. "
         "Times are in " +
         ZoneText(m_pane.Document().m_traces, g_useUtc) + ".";
}

void CGoToDlg::SetText(const std::string& text) {
  if (text == m_text) return;
  m_text = text;
  m_why.clear();
}

void CGoToDlg::OnOK() {
  m_why.clear();
  ShownTrace found;
  if (!Find(found)) return;
  EndDialog(kIdOk);
  ShowTrace(m_pane, found);
}

bool CGoToDlg::Find(ShownTrace& found) {
  return m_kind == Kind::Time ? FindMoment(found) : FindNumber(found);
}

bool CGoToDlg::FindMoment(ShownTrace& found) {
  const TraceList_t& traces = m_pane.Document().m_traces;
  GoToClock clock;
  clock.where = FilterPass::ClockOf(m_pane.Document());
  clock.focused = MomentOfTrace(m_pane.CurrentEvent());
  clock.day = clock.focused;
  if (!clock.day && !traces.empty()) clock.day = MomentOfTrace(traces.front());
  const auto moment = ReadGoToTime(m_text, clock, &m_why);
  return moment && FindTime(m_pane, *moment, found, m_why) == GoToResult::Found;
}

bool CGoToDlg::FindNumber(ShownTrace& found) {
  const std::optional<int> rows = CountShown(m_pane);
  if (!rows) return false;
  const std::optional<int> row = ReadGoToRow(m_text, *rows, &m_why);
  return row && FindRow(m_pane, *row, found) == GoToResult::Found;
}

bool MayGoTo(const TracePane* pane) {
  return pane && pane->IsBuilt() && !pane->Document().m_traces.empty();
}

void RunGoTo(TracePane& pane, CGoToDlg::Kind kind) {
  if (pane.FinishFilter()) CGoToDlg(pane, kind).DoModal();
}
