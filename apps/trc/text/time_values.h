// The cells of the columns of times: Delta, Since and Wall Time, as a list of the window has them.
//
// Owner    Borrows the reference.
// Threads  One.
#pragma once

#include "listview/cells/cell_text.h"
#include "listview/time/time_span.h"
#include "records/moments/trace_moments.h"

class TimeValues {
 public:
  // `reference`: what Since counts from; null: it has no cells.
  explicit TimeValues(bool utc, const TraceEvent_i* reference = nullptr)
      : m_utc(utc), m_moments(utc), m_reference(reference) {}

  TraceMoments& Moments() { return m_moments; }
  // `place`: as it was learned. `previous`: what is shown before; null: nothing.
  std::string Cell(Column column, std::uint64_t place, const TraceEvent_i& trace,
                   const TraceEvent_i* previous);

 private:
  const bool m_utc;
  TraceMoments m_moments;
  const TraceEvent_i* const m_reference;
};
