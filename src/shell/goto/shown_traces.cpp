#include "shell/goto/shown_traces.h"

#include <algorithm>

#include "settings/globals.h"

namespace {

// As many as take about a millisecond.
constexpr std::size_t kPerPart = 16'384, kPerSearch = 16;
constexpr LongWorkTexts kTexts = {"Go To", "Looking for the trace..."};

WhereStamp StampOfTrace(const TraceEvent_i& trace) {
  if (const std::uint8_t* const record = trace.Record()) return StampOf(RawTrace(record));
  return std::uint64_t{trace.GetDate()} << 32 | trace.GetTime();
}

bool Run(TracePane& pane, ShownWalk& walk) {
  return RunLongWork(pane.GetHost(), &pane.Document(), kTexts, walk);
}

}  // namespace

ShownWalk::ShownWalk(TracePane& pane, Visit visit)
    : m_list(dynamic_cast<const CTraceView*>(&pane)),
      m_traces(pane.Document().m_traces),
      m_pass(pane.m_filter, pane.Document()),
      m_part(!m_list && pane.m_filter.IsSlow() ? kPerSearch : kPerPart),
      m_visit(std::move(visit)) {}

std::size_t ShownWalk::All() const {
  return m_list ? static_cast<std::size_t>(m_list->Rows().Size()) : m_traces.size();
}

bool ShownWalk::DoPart() {
  const std::size_t end = std::min(All(), m_next + m_part);
  for (; m_next < end; ++m_next) {
    TraceEvent_i* const trace =
        m_list ? m_list->Rows().EventAt(static_cast<int>(m_next)) : m_traces[m_next];
    if (!m_list && !m_pass.Matches(*trace)) continue;
    if (m_visit({trace, m_row++})) return true;
  }
  return m_next >= All();
}

std::optional<int> ShownWalk::Progress() const {
  return Thousandths(m_next, All());
}

GoToResult FindTime(TracePane& pane, std::int64_t moment, ShownTrace& found, std::string& none) {
  const WhereStamp wanted = StampFrom(moment);
  WhereStamp best = kLastStamp, last = 0;
  const TraceEvent_i* latest = nullptr;
  found = {};
  ShownWalk walk(pane, [&](const ShownTrace& shown) {
    const WhereStamp stamp = StampOfTrace(*shown.trace);
    if (stamp < wanted) {
      if (stamp > last && MomentOfStamp(stamp)) {
        last = stamp;
        latest = shown.trace;
      }
      return false;
    }
    if (stamp >= best || !MomentOfStamp(stamp)) return false;
    best = stamp;
    found = shown;
    return best == wanted;
  });
  if (!Run(pane, walk)) return GoToResult::Cancelled;
  if (found.trace) return GoToResult::Found;
  none = latest ? "No shown trace is at or after this time. The last one is at " +
                      latest->GetTimeString(!g_useUtc) + "."
                : "No trace with a time is shown.";
  return GoToResult::None;
}

std::optional<int> CountShown(TracePane& pane) {
  if (const auto* const list = dynamic_cast<const CTraceView*>(&pane)) return list->Rows().Size();
  if (pane.m_filter.ShowsAll()) return static_cast<int>(pane.Document().m_traces.size());
  ShownWalk walk(pane, [](const ShownTrace&) { return false; });
  if (!Run(pane, walk)) return std::nullopt;
  return walk.Visited();
}

GoToResult FindRow(TracePane& pane, int row, ShownTrace& found) {
  if (const auto* const list = dynamic_cast<const CTraceView*>(&pane)) {
    found = {list->Rows().EventAt(row), row};
    return GoToResult::Found;
  }
  found = {};
  ShownWalk walk(pane, [&](const ShownTrace& shown) {
    if (shown.row != row) return false;
    found = shown;
    return true;
  });
  if (!Run(pane, walk)) return GoToResult::Cancelled;
  return found.trace ? GoToResult::Found : GoToResult::None;
}

void ShowTrace(TracePane& pane, const ShownTrace& shown) {
  if (auto* const view = dynamic_cast<CTraceView*>(&pane)) {
    constexpr unsigned kBoth = kRowFocused | kRowSelected;
    view->List().SetItemState(-1, 0, kBoth);
    view->List().SetItemState(shown.row, kBoth, kBoth);
    view->List().EnsureVisible(shown.row);
  } else {
    CTraceHint hint(shown.trace);
    pane.OnUpdate(nullptr, kHintFollow, &hint);
  }
  pane.Follow(shown.trace);
}
