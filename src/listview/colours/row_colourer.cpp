#include "listview/colours/row_colourer.h"

#include "settings/globals.h"
#include "tree/filter/filter_pass.h"

namespace {

std::uint32_t NumberOf(Colour colour) {
  return std::uint32_t{colour.red} << 16 | std::uint32_t{colour.green} << 8 | colour.blue;
}

}  // namespace

RowColourer::RowColourer(ColourProgramPtr program, const CTraceDoc& document)
    : m_document(document),
      m_judge(std::move(program), document.m_names),
      m_search(document.m_traces),
      m_generation(document.m_traces.Generation()) {}

void RowColourer::BeginPage(std::chrono::nanoseconds time) {
  if (m_generation != m_document.m_traces.Generation()) {
    m_generation = m_document.m_traces.Generation();
    m_judge.ForgetAll();
  }
  WhereClock clock{g_useUtc};
  if (Program().UsesEnd()) clock = FilterPass::ClockOf(m_document);
  m_judge.BeginPage(clock, ColourJudge::Clock::now() + time);
  m_search.BeginPage();
}

std::optional<RowColours> RowColourer::Of(const TraceEvent_i& trace,
                                          std::optional<std::size_t> place) {
  const ColourRule* const rule = m_judge.Of(trace, [&] { return Before(trace, place); }).rule;
  if (!rule) return std::nullopt;
  return RowColours{NumberOf(rule->ink), NumberOf(rule->ground)};
}

std::optional<WherePrevious> RowColourer::Before(const TraceEvent_i& trace,
                                                 std::optional<std::size_t> place) {
  if (!place) place = m_search.Find(trace);
  if (!place) return std::nullopt;
  if (*place == 0 || *place >= m_document.m_traces.size()) return WherePrevious();
  const TraceEvent_i& before = *m_document.m_traces[*place - 1];
  WherePrevious previous;
  previous.tic = before.GetTicCount();
  previous.machine = before.GetMachineId();
  previous.pid = before.GetPidId();
  return previous;
}
