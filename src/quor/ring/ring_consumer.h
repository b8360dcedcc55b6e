// The reading end of the ring. The service uses it, and the application itself while its sink is a
// file.
//
// Shape    Next gives one raw trace at a time, oldest first, as a private copy.
// Owner    Borrows the segment. The bytes of an item are valid until the next call.
// Errors   Broken: the ring contradicts itself and must not be read any further. Nothing is read
//          out of bounds, and no call does more work than one lap of the ring.
// Threads  One at a time, and one taker of a ring at a time (RingTaker).
#pragma once

#include <vector>

#include "base/bytes.h"
#include "quor/ring/segment_map.h"
#include "records/record_layout.h"

struct RingItem {
  std::uint64_t dropsBefore = 0;    // traces dropped because the ring was full, since the last item
  std::uint64_t damagedBefore = 0;  // committed records that were not a whole trace, skipped
  Bytes trace;                      // empty: the item only reports losses
};

// Later: the call did all the work that one call does, and found no item yet.
enum class RingStep { Item, Empty, Broken, Later };

class RingConsumer {
 public:
  // Begins where the last taker of this ring published. `room` bytes are allocated for items; a
  // longer item allocates more.
  explicit RingConsumer(const SegmentMap& segment, std::size_t room = kTraceBytesMax);

  // Continues where the last taker published, when this one takes over from the application again.
  void Resume();

  // The next committed trace. An item without a trace reports losses after the last trace.
  RingStep Next(RingItem& item);
  // The same when no producer lives any more: skips records that were reserved and never committed.
  // It looks at kSkipUnits of the ring in a call, because a ring may be large and others wait.
  RingStep NextOfDead(RingItem& item);
  static constexpr std::uint64_t kSkipUnits = 65536;
  // Traces that were reserved and not consumed, committed or not. After NextOfDead returned Empty
  // this is the exact number of traces that were being written when the application died.
  std::uint64_t Uncommitted() const;
  // For a dead application, at the end: drops that no item reported, because the application died
  // while it counted them, or a taker died while it reported them.
  std::uint64_t UnreportedDrops() const;
  // Marks these as reported: the next taker finds none.
  void MarkDropsReported();
  // Gives the space of all items so far back to the producers. Call it once per batch. Until then
  // the next taker would get these items again.
  void Publish();

  // Call it before you sleep until a producer calls you. Ready: do not sleep, a trace has
  // come. Soon: sleep at most kRecheckMs and ask again. Asleep: sleep as long as you like. (A
  // producer reads the sleeping flag without a fence, because a fence would cost more than the rest
  // of the trace. So it may miss a flag that is set while it commits; the second look finds that
  // commit.) A taker that expects more traces soon sleeps a few milliseconds without calling this,
  // so that producers need not wake it for each trace.
  enum class Wait { Ready, Soon, Asleep };
  static constexpr int kRecheckMs = 2;
  Wait BeginWait();
  void EndWait();

  std::uint64_t Traces() const { return m_traces; }  // ever consumed from this ring
  std::uint64_t Drops() const { return m_drops; }    // ever reported by items
  bool IsBroken() const { return m_broken; }

 private:
  enum class Look { Trace, Damaged, Nothing, Bad };
  Look LookAt(std::uint64_t units, std::uint32_t& size, bool& padding) const;
  Look TakeAt(std::uint32_t size, RingItem& item);
  Look SkipToCommitted(std::uint64_t left);
  std::uint64_t HoleAt(std::uint64_t units) const;
  RingStep Break();
  bool ReportsLosses(RingItem& item);
  RingRecord* At(std::uint64_t units) const;

  SegmentHeader* m_header;
  std::uint8_t* m_ring;
  std::uint64_t m_ringUnits, m_salt;
  int m_file;  // of the segment
  std::uint64_t m_ringOffset;
  std::uint64_t m_units = 0;    // the position of the next record
  std::uint64_t m_skipped = 0;  // units after it in which no record was found
  std::uint64_t m_traces = 0;   // consumed, damaged ones included
  std::uint64_t m_drops = 0;
  bool m_broken = false;
  bool m_lookedTwice = false;
  std::vector<std::uint8_t> m_trace;
};
