#include "live_filter.h"

// Did the trace bring an id, or a thread of a machine's process, that did not come before?
bool LiveFilter::Note(const TraceEvent_i& trace) {
  TraceIndexes& seen = m_seen.m_indexes;
  seen.Note(trace);
  m_threads.insert(std::uint64_t{trace.GetMachineId()} << 32 |
                   std::uint64_t{trace.GetPidId()} << 16 | trace.GetTidId());
  const std::size_t ids = seen.components.Ids().size() + seen.categories.Ids().size() +
                          seen.applications.Ids().size() + m_threads.size();
  return std::exchange(m_ids, ids) != ids;
}

bool LiveFilter::Passes(const TraceEvent_i& trace) {
  if (m_paths.Empty()) return true;
  if (Note(trace)) {
    m_filter = CTraceFilter();
    m_filter.MergeDocumentNames(m_seen);
    m_missing = m_paths.Take(m_host, m_filter, m_names);
  }
  return m_filter.Matches(trace) != 0;
}
