#include "panes/searched_pane.h"

#include <utility>

#include "tree/regex/regex.h"

void SearchedPane::CountHits(CTraceDoc& document, std::unique_ptr<CountedRows> rows) {
  const RegexProgram* const program = RegexLastProgram();
  if (!program || (m_hitCount && m_hitCount->IsOf(*program))) return;
  m_hitCount = std::make_unique<HitCount>(document, std::move(rows), *program);
}
