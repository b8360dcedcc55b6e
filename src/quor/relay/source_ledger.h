// What a reader has of one source whose messages come late, twice, in any order, or not at all:
//
//   traces of the source behind the beginning = delivered + lost
//
// once all holes are filled or given up. What came twice or too late is counted beside it.
//
// Shape    A message covers a range of serials, some delivered and the others lost before. It
//          counts as a whole, or not at all: two messages that overlap in a part cannot both be
//          right, and what the second adds is lost. The reader gives its traces out when Settled()
//          has reached the end of the message, so in the order of serials.
// Errors   A message that contradicts itself is Torn, and changes nothing.
// Threads  Plain values.
#pragma once

#include "quor/relay/serial_intervals.h"

struct SourceCounts {
  std::uint64_t delivered = 0;
  std::uint64_t lost = 0;   // told by messages, or given up
  std::uint64_t twice = 0;  // traces that had been covered
  std::uint64_t late = 0;   // traces of a hole that was given up
  bool operator==(const SourceCounts&) const = default;
};

class SourceLedger {
 public:
  enum class Verdict { Deliver, Twice, Late, Torn };

  // The reader begins behind this serial: what the first message that it meets says.
  explicit SourceLedger(std::uint64_t base = 0) : m_serials(base) {}

  // A message about (serial - delivered - lost, serial].
  Verdict Take(std::uint64_t serial, std::uint64_t delivered, std::uint64_t lost);
  // The source is known to have produced so many.
  void Reach(std::uint64_t serial) { m_serials.Reach(serial); }
  // Everything up to here is delivered or lost.
  std::uint64_t Settled() const { return m_serials.Base(); }
  // The last trace that is known of.
  std::uint64_t High() const { return m_serials.High(); }
  bool HasHole() const { return m_serials.FirstHole().Size() > 0; }
  // There are more holes than are kept apart: give one up now.
  bool MustGiveUp() const { return m_serials.MustGiveUp(); }
  // The traces of the first hole are lost for good. Returns how many.
  std::uint64_t GiveUpFirstHole();
  const SourceCounts& Counts() const { return m_counts; }

 private:
  SerialIntervals m_serials;
  SourceCounts m_counts;
};
