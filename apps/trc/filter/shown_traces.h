// The traces of a document that the options of a command line choose, in order.
//
// Rows are searched when they are requested, so the first ones are available immediately, however
// long the file is.
//
// Owner    Borrows the document, which must not change, and the options.
// Threads  One.
#pragma once

#include <cstdint>
#include <functional>
#include <limits>
#include <memory>
#include <optional>
#include <utility>
#include <vector>

#include "documents/trace_doc.h"
#include "filter/trace_options.h"
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
  // Says on standard error if searches of the filter text were given up.
  ~ShownTraces();
  ShownTraces(const ShownTraces&) = delete;
  ShownTraces& operator=(const ShownTraces&) = delete;

  // What the user has said of the traces, for the filter text. Before Filter.
  void UseMarks(std::shared_ptr<const WhereMarks> marks) { m_filter.noted = std::move(marks); }
  // Keeps what the filter and the values of the options let through. False after a message on
  // standard error: a path has no node, or no trace has a name. REQUIRES: no row has been
  // requested.
  bool Filter(const TraceOptions& options);
  // Keeps those for which the test holds; tests them in order. REQUIRES: as for Filter.
  void Keep(Test test);
  // The next trace for which the test may hold, from the one given last on: its position, All() if
  // there is none, nothing if it is not known yet. The others are passed over without a test.
  // It is asked only for the traces from one on, in order or backward; each answer is used once.
  using NextCandidate = std::function<std::optional<std::size_t>()>;
  using Candidates = std::function<NextCandidate(std::size_t from, bool backward)>;
  void PassOver(Candidates candidates) { m_candidates = std::move(candidates); }
  void OnLook(Look look) { m_look = std::move(look); }
  // Of the traces that are kept: those of --from, --tail and --count, with --context beside them.
  // Gives the first row; the one before, if there is one, is only its predecessor. Once, after
  // Filter, Keep and OnLook.
  std::size_t Limit(const TraceOptions& options);

  CTraceDoc& Document() const { return m_document; }
  std::size_t All() const { return m_document.m_traces.size(); }
  // Does the row exist? Searches the file only as far as needed, so that the first rows are
  // available immediately. False also when the look function has ended the search.
  bool Has(std::size_t row) {
    if (m_all) return row < m_end;
    while (m_places.size() <= row && SearchOn()) {
    }
    return row < m_places.size();
  }
  // Is a search needed to find rows?
  bool IsSearched() const { return !m_all; }
  // The number of chosen rows, without what stands beside them.
  std::size_t Count();
  // REQUIRES: Has(row).
  TraceEvent_i& At(std::size_t row) const { return *m_document.m_traces[PlaceOf(row)]; }
  // The trace's position in the file, from 0. REQUIRES: Has(row).
  std::size_t PlaceOf(std::size_t row) const { return m_all ? row : m_places[row]; }
  // Is it shown only because it stands beside a chosen one? REQUIRES: Has(row).
  bool IsBeside(std::size_t row) const { return m_context > 0 && !m_all && m_beside[row]; }
  bool HasContext() const { return m_context > 0; }
  // The first row whose position in the file is at or after `place`; there may be none. Of the
  // earlier rows only the last one is kept. REQUIRES: no row has been requested.
  std::size_t FirstRowFrom(std::uint64_t place);

 private:
  bool PassesAt(std::size_t place);
  bool TestAt(std::size_t place);
  // Tests the next traces. False when there are none, or the look function ends the search.
  bool SearchOn();
  bool JumpOn();
  void Step(std::size_t place);
  void Add(std::size_t place, bool beside);
  bool IsFull() const { return m_chosen >= m_count && m_next >= m_besideEnd; }
  class Backward;
  std::size_t PlaceOfTail(std::uint64_t from, std::uint64_t tail);

  CTraceDoc& m_document;
  bool m_all = true;
  CTraceFilter m_filter;
  std::unique_ptr<FilterPass> m_pass;
  std::optional<ChoiceTest> m_choice;
  Test m_test;
  Look m_look;
  Candidates m_candidates;
  NextCandidate m_nextCandidate;  // empty: each trace is tested
  std::size_t m_jumps = 0;
  std::uint64_t m_count = TraceOptions::kAll, m_context = 0;
  std::size_t m_end = All();    // of all rows, where all are shown
  std::size_t m_next = 0;       // position of the next trace to test
  std::size_t m_besideEnd = 0;  // of what stands behind the last chosen one
  std::uint64_t m_chosen = 0;
  // What --tail has asked about from the end on: those that pass, the last one first.
  std::size_t m_knownFrom = std::numeric_limits<std::size_t>::max();
  std::vector<std::uint32_t> m_known;
  std::vector<std::uint32_t> m_places;  // a file has less than 4 GiB, a trace at least 45 bytes
  std::vector<bool> m_beside;           // by row, with --context only
};
