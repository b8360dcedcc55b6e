// The traces of a document that pass the filter of a command line, in order.
//
// Rows are searched when they are requested, so the first ones are available immediately, however
// long the file is.
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
  // Called every kTracesPerSearchLook traces of a search, with the current position. False ends the
  // search.
  static constexpr std::size_t kTracesPerSearchLook = 256;
  using Look = std::function<bool(std::size_t place)>;
  using Test = std::function<bool(const TraceEvent_i& trace)>;

  // All traces of the document.
  explicit ShownTraces(CTraceDoc& document) : m_document(document) {}

  // Keeps the traces that pass; without steps it keeps all. False after a message on standard
  // error: a path has no node. REQUIRES: no row has been requested.
  bool Filter(const FilterPaths& paths);
  // Keeps those for which the test holds; tests them in order. REQUIRES: as for Filter.
  void Keep(Test test);
  void OnLook(Look look) { m_look = std::move(look); }

  CTraceDoc& Document() const { return m_document; }
  std::size_t All() const { return m_document.m_traces.size(); }
  // Does the row exist? Searches the file only as far as needed, so that the first rows are
  // available immediately. False also when the look function has ended the search.
  bool Has(std::size_t row) {
    if (m_all) return row < All();
    while (m_places.size() <= row && SearchOn()) {
    }
    return row < m_places.size();
  }
  // Is a search needed to find rows?
  bool IsSearched() const { return !m_all; }
  // The number of rows.
  std::size_t Count();
  // REQUIRES: Has(row).
  TraceEvent_i& At(std::size_t row) const { return *m_document.m_traces[PlaceOf(row)]; }
  // The trace's position in the file, from 0. REQUIRES: Has(row).
  std::size_t PlaceOf(std::size_t row) const { return m_all ? row : m_places[row]; }
  // The first row whose position in the file is at or after `place`; there may be none. Of the
  // earlier rows only the last one is kept. REQUIRES: no row has been requested.
  std::size_t FirstRowFrom(std::uint64_t place);

 private:
  bool Passes(const TraceEvent_i& trace) {
    return (!m_pass || m_pass->Matches(trace)) && (!m_test || m_test(trace));
  }
  // Tests the next traces. False when there are none, or the look function ends the search.
  bool SearchOn();

  CTraceDoc& m_document;
  bool m_all = true;
  CTraceFilter m_filter;
  std::unique_ptr<FilterPass> m_pass;
  Test m_test;
  Look m_look;
  std::size_t m_next = 0;               // position of the next trace to test
  std::vector<std::uint32_t> m_places;  // a file has less than 4 GiB, a trace at least 45 bytes
};
