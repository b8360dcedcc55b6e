// The traces of a document that pass the filter of a command line, in order.
//
// Rows are found when they are asked for: the first ones are there at once, however long the file.
//
// Owner    Borrows the document, which must not change.
// Threads  One.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <utility>
#include <vector>

#include "documents/trace_doc.h"
#include "filter/filter_paths.h"
#include "tree/filter/filter_pass.h"

class ShownTraces {
 public:
  // Asked every kTracesPerSearchLook traces of a search, with the place that it has come to. False
  // ends it there.
  static constexpr std::size_t kTracesPerSearchLook = 256;
  using Look = std::function<bool(std::size_t place)>;
  using Test = std::function<bool(const TraceEvent_i& trace)>;

  // All traces of the document.
  explicit ShownTraces(CTraceDoc& document) : m_document(document) {}

  // Leaves those that pass; no steps leave all. False when a path leads nowhere: standard error has
  // said so. REQUIRES: no row has been asked for.
  bool Filter(const FilterPaths& paths);
  // Leaves those of them for which the test holds, asked in order. REQUIRES: as Filter.
  void Keep(Test test);
  void OnLook(Look look) { m_look = std::move(look); }

  CTraceDoc& Document() const { return m_document; }
  std::size_t All() const { return m_document.m_traces.size(); }
  // Is there such a row? The file is searched as far as that needs, so that the first rows are
  // there at once. False also when the look has ended the search.
  bool Has(std::size_t row) {
    if (m_all) return row < All();
    while (m_places.size() <= row && SearchOn()) {
    }
    return row < m_places.size();
  }
  // Do rows have to be searched for?
  bool IsSearched() const { return !m_all; }
  // How many there are.
  std::size_t Count();
  // REQUIRES: Has(row).
  TraceEvent_i& At(std::size_t row) const { return *m_document.m_traces[PlaceOf(row)]; }
  // The trace's place in the file, from 0. REQUIRES: Has(row).
  std::size_t PlaceOf(std::size_t row) const { return m_all ? row : m_places[row]; }
  // The first row whose place in the file is not before this one; there may be none. Of the rows
  // before it only the last is there. REQUIRES: no row has been asked for.
  std::size_t FirstRowFrom(std::uint64_t place);

 private:
  bool Passes(const TraceEvent_i& trace) {
    return (!m_pass || m_pass->Matches(trace)) && (!m_test || m_test(trace));
  }
  // Tests the next traces. False when there are none, or the look says so.
  bool SearchOn();

  CTraceDoc& m_document;
  bool m_all = true;
  CTraceFilter m_filter;
  std::unique_ptr<FilterPass> m_pass;
  Test m_test;
  Look m_look;
  std::size_t m_next = 0;               // place of the trace to be tested next
  std::vector<std::uint32_t> m_places;  // a file has less than 4 GiB, a trace at least 34 bytes
};
