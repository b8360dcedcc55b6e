#include "panes/searched_pane.h"

#include <utility>

#include "tree/regex/regex.h"

void SearchedPane::CountHits(CTraceDoc& document, std::unique_ptr<CountedRows> rows) {
  const RegexProgram* const program = RegexLastProgram();
  if (!program || (m_hitCount && m_hitCount->Program() == *program)) return;
  m_hitCount = std::make_unique<HitCount>(document, std::move(rows), *program);
}

void SearchedPane::VisitHits(const std::function<void(const TraceEvent_i&)>& visit) const {
  if (!m_hitCount) return;
  const int count = m_hitCount->Count(), step = count / kHitsVisited + 1;
  for (int hit = 0; hit < count; hit += step)
    if (const TraceEvent_i* const event = m_hitCount->TraceOf(hit)) visit(*event);
}
