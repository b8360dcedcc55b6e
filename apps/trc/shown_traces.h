// The traces of a document that pass the filter of a command line, in order.
//
// Owner    Borrows the document, which must not change.
// Threads  One.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "documents/trace_doc.h"
#include "filter_paths.h"

class ShownTraces {
 public:
  // All traces of the document.
  explicit ShownTraces(CTraceDoc& document) : m_document(document) {}

  // Leaves those that pass; no steps leave all. False when a path leads nowhere: standard error has
  // said so.
  bool Filter(const FilterPaths& paths);

  // Leaves those of them for which test(const TraceEvent_i&) holds, asked in order.
  template <class Test>
  void Keep(Test test) {
    std::vector<std::uint32_t> kept;
    for (std::size_t row = 0; row < Size(); ++row)
      if (test(At(row))) kept.push_back(static_cast<std::uint32_t>(PlaceOf(row)));
    m_places = std::move(kept);
    m_all = false;
  }

  CTraceDoc& Document() const { return m_document; }
  std::size_t Size() const { return m_all ? m_document.m_traces.size() : m_places.size(); }
  TraceEvent_i& At(std::size_t row) const { return *m_document.m_traces[PlaceOf(row)]; }
  // The trace's place in the file, from 0.
  std::size_t PlaceOf(std::size_t row) const { return m_all ? row : m_places[row]; }
  // The first row whose place in the file is not before this one; Size() when there is none.
  std::size_t FirstRowFrom(std::uint64_t place) const;

 private:
  CTraceDoc& m_document;
  bool m_all = true;
  std::vector<std::uint32_t> m_places;  // a file has less than 4 GiB, a trace at least 34 bytes
};
