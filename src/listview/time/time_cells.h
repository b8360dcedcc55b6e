// The texts of the columns of times in one list, and the trace that "Since" counts from.
//
// Shape    A cell costs the same wherever its row is. "Wall Time" has microseconds once the tic
//          counts of all traces are known: these are learned when such a cell is asked for, a few
//          milliseconds at a time, and the list is then painted again.
// Owner    Borrows the document. Call Forget before its traces are deleted; a clear needs nothing.
// Threads  Interface thread.
#pragma once

#include <functional>
#include <optional>

#include "documents/trace_doc.h"
#include "docview/posted_step.h"
#include "listview/cells/cell_text.h"
#include "listview/colours/place_search.h"
#include "listview/time/time_span.h"
#include "records/moments/trace_moments.h"

class TimeCells {
 public:
  static constexpr char kReference[] = "reference", kReferenceGone[] = "reference gone";

  TimeCells(const CTraceDoc& document, std::function<void()> repaint);

  // ---- the reference of "Since"
  // The trace becomes it; the reference itself is taken off.
  void ToggleReference(const TraceEvent_i& trace);
  bool IsReference(const TraceEvent_i* trace) const;
  void Forget(const CTraceHint& removed);

  // ---- cells
  // Around the cells of a page. IsLate: one of them has to be asked for again.
  void BeginPage();
  bool IsLate() const { return m_late; }
  // `above`: the trace in the row above. `place`: in the document's list, if that is known.
  std::string Text(Column column, const TraceEvent_i& trace, const TraceEvent_i* above,
                   std::optional<std::size_t> place);

 private:
  struct Reference {
    const TraceEvent_i* trace;  // only compared; null: deleted
    std::uint64_t generation;   // of the document's list
    TracePoint point;
  };

  bool IsGone() const;
  std::string SinceText(const TraceEvent_i& trace) const;
  std::string WallText(const TraceEvent_i& trace, std::optional<std::size_t> place);
  std::uint64_t Known() const;  // how many traces there have been since the last clear
  bool Learn();
  void GoOnLearning();

  const CTraceDoc& m_document;
  const std::function<void()> m_repaint;
  std::optional<Reference> m_reference;
  TraceMoments m_moments{false};
  std::uint64_t m_generation = 0;  // of the traces that were learned
  std::uint64_t m_learned = 0;     // these, counted with TraceList_t::Popped
  PlaceSearch m_search;
  bool m_late = false;
  PostedStep m_step;
};
