#include "listview/rows/nearest_row.h"

#include <algorithm>

namespace {

constexpr int kRowsPerPart = 8192;

std::uint32_t NumberOf(const TraceEvent_i& event) {
  const std::uint8_t* record = event.Record();
  return record ? RawTrace(record).SequenceNumber() : event.GetSequenceNumber();
}

}  // namespace

NearestRow::NearestRow(const RowStore& rows, const TraceEvent_i& target)
    : m_rows(rows), m_target(target), m_wanted(NumberOf(target)) {}

bool NearestRow::DoPart() {
  const int all = m_rows.Size();
  for (const int end = std::min(m_next + kRowsPerPart, all); m_next < end; ++m_next)
    if (Look()) return true;
  return m_next >= all;
}

// Is this the last row to check?
bool NearestRow::Look() {
  const TraceEvent_i* const event = m_rows.EventAt(m_next);
  if (event == &m_target) {
    m_row = m_next;
    return true;
  }
  const std::uint32_t number = NumberOf(*event);
  if (number > m_wanted) {
    // Every earlier row has a number up to the wanted one, so neither difference wraps.
    const bool earlier = m_next > 0 && m_wanted - m_previous <= number - m_wanted;
    m_row = earlier ? m_next - 1 : m_next;
    return true;
  }
  m_previous = number;
  return false;
}

std::optional<int> NearestRow::Progress() const {
  return Thousandths(static_cast<unsigned>(m_next), static_cast<unsigned>(m_rows.Size()));
}
