#include "listview/rows/row_store.h"

#include <algorithm>

int RowStore::Size() const {
  if (IsStale()) return 0;
  return static_cast<int>(m_window ? m_end - m_begin : m_rows.size());
}

TraceRow RowStore::operator[](int row) const {
  if (!m_window) return m_rows[static_cast<std::size_t>(row)];
  return {InWindow(m_begin + static_cast<std::uint64_t>(row)), 0};
}

void RowStore::Clear() {
  m_generation = m_traces.Generation();
  m_window = true;
  m_begin = m_end = m_traces.Popped();
  std::deque<TraceRow>().swap(m_rows);
}

void RowStore::ClearToQueue() {
  Clear();
  m_window = false;
}

void RowStore::TakeOver(RowStore& other) {
  m_generation = other.m_generation;
  m_window = other.m_window;
  m_begin = other.m_begin;
  m_end = other.m_end;
  m_rows.swap(other.m_rows);
  other.Clear();
}

void RowStore::ShowAll() {
  Clear();
  m_end = m_begin + m_traces.size();
}

void RowStore::Append(TraceEvent_i* event) {
  if (IsStale()) Clear();
  if (m_window && ExtendWindow(event)) return;
  if (m_window) Materialise();
  m_rows.push_back({event, 0});
}

int RowStore::RemoveRow(const TraceEvent_i* event, bool oldest) {
  if (Size() == 0) return -1;
  if (EventAt(0) == event) {
    RemoveFirst();
    return 0;
  }
  if (oldest) return -1;
  if (m_window) Materialise();
  const auto entry = std::find_if(m_rows.begin(), m_rows.end(),
                                  [event](const TraceRow& row) { return row.event == event; });
  if (entry == m_rows.end()) return -1;
  const auto row = entry - m_rows.begin();
  m_rows.erase(entry);
  return static_cast<int>(row);
}

std::size_t RowStore::StorageBytes() const {
  return m_rows.size() * sizeof(TraceRow);
}

TraceEvent_i* RowStore::InWindow(std::uint64_t position) const {
  return m_traces[static_cast<std::size_t>(position - m_traces.Popped())];
}

// The event is the next one after the window: the window grows by it.
bool RowStore::ExtendWindow(const TraceEvent_i* event) {
  // A drain may have trimmed traces that it has not reported yet. If all rows were trimmed, the
  // next trace is at the front of the document's list, or after others that the filter hides.
  if (m_begin == m_end && m_end < m_traces.Popped()) m_begin = m_end = m_traces.Popped();
  if (m_end - m_traces.Popped() >= m_traces.size() || InWindow(m_end) != event) return false;
  ++m_end;
  return true;
}

void RowStore::RemoveFirst() {
  if (m_window)
    ++m_begin;
  else
    m_rows.pop_front();
}

void RowStore::Materialise() {
  for (std::uint64_t position = m_begin; position < m_end; ++position)
    m_rows.push_back({InWindow(position), 0});
  m_window = false;
}
