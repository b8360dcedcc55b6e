// The colours of the rows of one list, by the colour rules in use.
//
// Owner    Borrows the document. Call Forget before one of its traces is deleted; a clear needs
//          nothing.
// Threads  Interface thread.
#pragma once

#include <chrono>
#include <optional>

#include "controls/text/cell_parts.h"
#include "documents/trace_doc.h"
#include "listview/colours/place_search.h"
#include "where/colours/colour_judge.h"

class RowColourer {
 public:
  // What a page may take. The rest of it comes with the next painting.
  static constexpr std::chrono::milliseconds kPageTime{8};

  RowColourer(ColourProgramPtr program, const CTraceDoc& document);

  void BeginPage(std::chrono::nanoseconds time);
  // `place`: in the document's list, if that is known. Nothing: plain, or not known yet.
  std::optional<RowColours> Of(const TraceEvent_i& trace, std::optional<std::size_t> place);
  // Has a row of this page no answer yet?
  bool IsLate() const { return m_judge.IsLate(); }
  void Forget(const TraceEvent_i* trace) { m_judge.Forget(trace); }
  const ColourProgram& Program() const { return m_judge.Program(); }
  std::uint64_t Asked() const { return m_judge.Asked(); }

 private:
  std::optional<WherePrevious> Before(const TraceEvent_i& trace, std::optional<std::size_t> place);

  const CTraceDoc& m_document;
  ColourJudge m_judge;
  PlaceSearch m_search;
  std::uint64_t m_generation;
};
