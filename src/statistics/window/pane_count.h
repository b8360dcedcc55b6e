// The counts of the traces of a document that pass a filter, as they are now.
//
// Shape    The traces of a file are counted on all processors while Step takes what they have.
// Those
//          of a monitor are counted in short steps, and what the monitor removes is taken out
//          again.
// Owner    Borrows the document; has copies of the filter and, for threads, of the names.
// Errors   Failed: no memory.
// Threads  Interface thread.
#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "documents/trace_doc.h"
#include "statistics/live_counts.h"
#include "statistics/trace_count.h"
#include "tree/filter/trace_filter.h"

class PaneCount {
 public:
  PaneCount(CTraceDoc& document, const CTraceFilter& filter, StatField field);
  ~PaneCount();

  // Is it still the count of this document's traces with this filter? Traces that have come or gone
  // one by one do not matter.
  bool IsOf(const CTraceDoc& document, const CTraceFilter& filter, StatField field) const;
  // Counts on, for about this long. True: something has changed.
  bool Step(std::chrono::milliseconds time);
  // All traces are counted that are there.
  bool IsWhole() const;
  bool HasFailed() const { return m_failed; }
  int Thousandths() const;
  // Valid until the next call of any operation.
  const StatTable& Table();

 private:
  using Clock = std::chrono::steady_clock;
  bool StepFile(Clock::time_point until);
  bool StepLive(Clock::time_point until);
  bool TakeOutRemoved();

  CTraceDoc& m_document;
  CTraceFilter m_filter;
  const StatField m_field;
  const std::uint64_t m_generation;
  const bool m_utc;                    // a text may have times without a zone
  std::unique_ptr<TraceCount> m_file;  // null: a monitor's
  bool m_whole = false, m_failed = false;
  LiveCounts m_live;
  // Counted from the first trace that the document ever had: what m_live has.
  std::uint64_t m_first, m_next;
};
