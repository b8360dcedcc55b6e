// The search of a plan in the texts of neighbouring traces of a mapped file.
//
// Owner    Borrows plan and traces. Errors  std::bad_alloc.
// Threads  One at a time; several scans may share plan and traces.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "records/trace_list.h"
#include "tree/regex/plan/regex_matcher.h"

// A trace that may match. A file has less than 4 GiB, and a trace 45 bytes: the top bit is free.
class ScanHit {
 public:
  ScanHit(std::size_t place, bool sure)
      : m_bits(static_cast<std::uint32_t>(place) << 1 | (sure ? 1u : 0u)) {}
  std::size_t Place() const { return m_bits >> 1; }
  bool IsSure() const { return (m_bits & 1) != 0; }
  bool operator==(const ScanHit&) const = default;

 private:
  std::uint32_t m_bits;
};

class PieceScan {
 public:
  // `behind`: so far behind those of the traces lie the bytes that are searched.
  PieceScan(const RegexPlan& plan, const TraceList_t::Reader& traces, std::ptrdiff_t behind = 0)
      : m_plan(plan), m_traces(traces), m_behind(behind) {}

  // Of the traces [from, end), in order. REQUIRES: their records follow one another in one file.
  std::vector<ScanHit> Hits(std::size_t from, std::size_t end);

 private:
  void ScanTexts(std::size_t from, std::size_t end);
  void ScanBytes(std::size_t from, std::size_t end);
  void Test(std::size_t place);
  std::size_t PlaceOf(const std::uint8_t* byte, std::size_t from, std::size_t end) const;
  const std::uint8_t* RecordAt(std::size_t place) const {
    return m_traces[place]->Record() + m_behind;
  }

  const RegexPlan& m_plan;
  const TraceList_t::Reader& m_traces;
  const std::ptrdiff_t m_behind;
  RegexMatcher m_matcher;
  std::vector<ScanHit> m_hits;
};
