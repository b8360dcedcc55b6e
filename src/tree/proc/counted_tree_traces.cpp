#include "tree/proc/counted_tree_traces.h"

int CountedTreeTraces::OldestIn(const CTraceDoc& document, const CTraceHint& hint) {
  const TraceList_t& traces = document.m_traces;
  std::size_t count = 0;
  while (count < hint.m_events.size() && count < traces.size() &&
         traces[count] == hint.m_events[count])
    ++count;
  return static_cast<int>(count);
}

// The filter may learn names of later traces.
void CountedTreeTraces::BeginStep() {
  m_pass.reset();
}

bool CountedTreeTraces::IsShown(int row) {
  if (!m_pass) {
    m_filter = m_view.m_filter;
    m_pass.emplace(m_filter, m_view.Document());
  }
  return m_pass->MatchesBehind(*CountedAt(row), row > 0 ? CountedAt(row - 1) : nullptr);
}

// The search for the place is as long as the document: once for each trace that the user goes to.
int CountedTreeTraces::CurrentRow() const {
  const CTraceEvent* const node = m_view.NodeOf(m_view.Tree().SelectedItem());
  const TraceEvent_i* const current = m_view.CurrentEvent();
  const TraceList_t& traces = Traces();
  if (!current || node->Kind() >= NodeKind::Thread) return -1;
  if (current != m_current || traces.Generation() != m_generation || m_place < traces.Popped()) {
    m_current = current;
    m_generation = traces.Generation();
    std::uint64_t place = traces.Popped();
    m_place = place + traces.size();
    traces.ForEach(0, [&](const TraceEvent_i* trace) {
      if (trace == current) m_place = place;
      ++place;
    });
  }
  return static_cast<int>(m_place - traces.Popped());
}
