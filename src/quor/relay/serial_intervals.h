// The traces of one source that a reader has accounted for, where messages come late, twice, in any
// order, or not at all.
//
// Shape    Traces of a source have serials from 1. A message covers (from, to]. Everything up to
//          Base() is settled: delivered, lost, or before the reader began. Behind it lie a few
//          ranges that came early, and the holes between them. A hole that is given up is lost, and
//          what comes for it afterwards is late.
//
//          serial  Base()      hole        came       hole     came    High()
//            |-------|---------------|###########|----------|########|
//
// Errors   A message that covers nothing, or ends before it begins, covers nothing.
// Threads  Plain values.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

struct SerialRange {
  std::uint64_t from = 0, to = 0;  // (from, to]
  std::uint64_t Size() const { return to - from; }
  bool operator==(const SerialRange&) const = default;
};

class SerialIntervals {
 public:
  // More ranges than these are not kept apart: the first hole is given up then.
  static constexpr std::size_t kRangesMax = 1024;

  // The reader begins behind `base`.
  explicit SerialIntervals(std::uint64_t base = 0) : m_base(base) {}

  // The parts of a message that nothing has covered before, in order. They are covered from now on.
  // The rest of it came twice, or too late.
  std::vector<SerialRange> Cover(SerialRange message);
  // The first hole; nothing: there is none. Its size is 0 then.
  SerialRange FirstHole() const;
  // It will not come any more. Returns how many traces it has.
  std::uint64_t GiveUpFirstHole();
  bool MustGiveUp() const { return m_ahead.size() > kRangesMax; }
  // The source is known to have produced so many traces: the rest is a hole as well.
  void Reach(std::uint64_t serial);

  std::uint64_t Base() const { return m_base; }
  std::uint64_t High() const { return m_high > m_base ? m_high : m_base; }
  // Parts of it that were given up, as far as they are still known apart: the last ones.
  bool WasGivenUp(std::uint64_t serial) const;

 private:
  static constexpr std::size_t kGivenUpMax = 1024;
  void Join();

  std::uint64_t m_base, m_high = 0;
  std::map<std::uint64_t, std::uint64_t> m_ahead;  // from -> to, apart from each other and the base
  std::map<std::uint64_t, std::uint64_t> m_givenUp;  // from -> to
};
