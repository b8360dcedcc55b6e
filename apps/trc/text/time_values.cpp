#include "text/time_values.h"

#include "listview/time/time_cells.h"

std::string TimeValues::Cell(Column column, std::uint64_t place, const TraceEvent_i& trace,
                             const TraceEvent_i* previous) {
  if (column == Column::Delta) return DeltaText(trace, previous);
  if (column == Column::Since) {
    if (!m_reference) return {};
    if (m_reference == &trace) return TimeCells::kReference;
    return TimeSpanText(TracePoint(*m_reference), TracePoint(trace));
  }
  std::string text;
  return m_moments.AppendKnown(text, place, trace) ? text : trace.GetTimeString(!m_utc);
}
