// The slices of time of a document's traces that pass a filter, as they are now.
//
// Shape    The traces of a file are counted on all processors. Those of a monitor are counted in
//          short steps, and what the monitor removes is taken out again before it goes. A zoom
//          counts the traces of its range only, in narrower slices; one of all times leaves nothing
//          out that is far away. While a monitor's traces are
//          counted anew Slices gives what was there before.
// Owner    Borrows the document; has a copy of the filter.
// Cost     40 KiB, of a file 50; of a monitor that is filtered a bit more for each trace held.
// Errors   Failed: no memory.
// Threads  Interface thread.
#pragma once

#include <chrono>
#include <memory>
#include <optional>

#include "documents/trace_doc.h"
#include "overview/slice_count.h"
#include "overview/window/shown_bits.h"
#include "tree/filter/trace_filter.h"

class FilterPass;

class PaneSlices {
 public:
  // `known`: of earlier slices of the same traces, or null.
  PaneSlices(CTraceDoc& document, const CTraceFilter& filter, std::optional<TimeLimits> zoom = {},
             PieceTimesPtr known = nullptr);
  ~PaneSlices();

  // Are they still those of this document's traces with this filter? Traces that have come or gone
  // one by one do not matter.
  bool IsOf(const CTraceDoc& document, const CTraceFilter& filter) const;
  // Has the document still the traces that it had, but for those?
  bool IsOfTraces(const CTraceDoc& document) const {
    return &document == &m_document && document.m_traces.Generation() == m_generation;
  }
  const std::optional<TimeLimits>& Zoom() const { return m_zoom; }
  // Of a range, and not of the whole time with or without what is far away.
  bool IsOfPart() const { return m_zoom && *m_zoom != TimeLimits(); }
  // Counts on, for about this long. True: something has changed.
  bool Step(std::chrono::milliseconds time);
  // The document is about to remove these, its oldest traces.
  void OnRemoval(const CTraceHint& oldest);
  bool IsWhole() const;
  bool HasFailed() const { return m_failed; }
  const TimeSlices& Slices() const;
  // Null: not known.
  PieceTimesPtr Times() const { return m_file ? m_file->Times() : nullptr; }
  // The first trace of the document with a time in there; null: there is none.
  TraceEvent_i* FirstIn(const TimeLimits& limits);

 private:
  using Clock = std::chrono::steady_clock;
  bool StepFile(Clock::time_point until);
  bool StepLive(Clock::time_point until);
  void CountLive(Clock::time_point until);
  void BeginAnew(const TimeLimits& limits);
  bool LearnLosses();
  TraceEvent_i* FirstIn(const TimeLimits& limits, std::size_t from, std::size_t end,
                        FilterPass* pass);

  CTraceDoc& m_document;
  CTraceFilter m_filter;
  const std::optional<TimeLimits> m_zoom;
  const std::uint64_t m_generation;
  const bool m_utc;                    // a text may have times without a zone
  std::unique_ptr<SliceCount> m_file;  // null: a monitor's
  bool m_whole = false, m_failed = false;
  // ---- of a monitor
  TimeSlices m_slices;
  std::unique_ptr<const TimeSlices> m_before;  // until m_slices is whole
  SlicedReader m_reader;
  std::size_t m_names;  // when the losses were learned
  ShownBits m_shown;    // of what is counted, if anything is filtered
  bool m_changed = false;
  // Counted from the first trace that the document ever had.
  std::uint64_t m_next;
};
