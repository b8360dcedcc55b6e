// The end of the ring that takes traces out: used by the service, and by the application itself
// while its sink is a file.
//
// Shape    Next gives one raw trace at a time, oldest first, as a private copy.
// Owner    Borrows the segment. The bytes of an item are good until the next call.
// Errors   Broken: the ring contradicts itself and must not be read any further; nothing was read
//          out of bounds and no call does more work than one lap of the ring.
// Threads  One at a time, and one taker of a ring at a time (RingTaker).
#pragma once

#include <vector>

#include "base/bytes.h"
#include "quor/ring/segment_map.h"
#include "records/record_layout.h"

struct RingItem {
  std::uint64_t dropsBefore = 0;    // traces dropped because the ring was full, since the last item
  std::uint64_t damagedBefore = 0;  // committed records that were no whole trace, skipped
  Bytes trace;                      // empty: only losses are told
};

enum class RingStep { Item, Empty, Broken };

class RingConsumer {
 public:
  // Begins where the last taker of this ring published. `room` is kept ready for the bytes of an
  // item; a longer one gets more.
  explicit RingConsumer(const SegmentMap& segment, std::size_t room = kTraceBytesMax);

  // Goes on where the last taker published: when this one takes over again from the application.
  void Resume();

  // The next committed trace. An item without a trace tells of losses behind the last one.
  RingStep Next(RingItem& item);
  // The same when no producer lives any more: skips what was reserved and never committed.
  RingStep NextOfDead(RingItem& item);
  // Traces that were reserved and not consumed, committed or not. When NextOfDead was Empty: those
  // that were being written when the application died, exact.
  std::uint64_t Uncommitted() const;
  // Of the dead, at the end: drops that no item told, because the application died while it counted
  // them or a taker while it told them.
  std::uint64_t UntoldDrops() const;
  // Now these are told, and who looks again finds none.
  void PassRest();
  // Lets the producers have the room of all items so far. Call it per batch: until then a taker
  // that follows this one sees them again.
  void Publish();

  // Before sleeping until a producer rings the bell. Ready: do not sleep, something came. Soon:
  // sleep at most kRecheckMs and ask again; Asleep: sleep as long as you like. (A producer asks for
  // the sleeping flag without a fence, which would cost it more than the rest of the trace; a
  // commit that just crossed the flag is found by the second look.) A taker that expects more
  // traffic sleeps a few milliseconds without asking, so that the producers need not wake it for
  // each trace.
  enum class Wait { Ready, Soon, Asleep };
  static constexpr int kRecheckMs = 2;
  Wait BeginWait();
  void EndWait();

  std::uint64_t Traces() const { return m_traces; }  // ever consumed from this ring
  std::uint64_t Drops() const { return m_drops; }    // ever told by items
  bool IsBroken() const { return m_broken; }

 private:
  enum class Look { Trace, Damaged, Nothing, Bad };
  Look LookAt(std::uint64_t units, std::uint32_t& size, bool& padding) const;
  Look TakeAt(std::uint32_t size, RingItem& item);
  bool SkipToCommitted(std::uint64_t left);
  RingStep Break();
  bool TellsLosses(RingItem& item);
  RingRecord* At(std::uint64_t units) const;

  SegmentHeader* m_header;
  std::uint8_t* m_ring;
  std::uint64_t m_ringUnits, m_salt;
  std::uint64_t m_units = 0;   // the place of the next record
  std::uint64_t m_traces = 0;  // consumed, damaged ones included
  std::uint64_t m_drops = 0;
  bool m_broken = false;
  bool m_lookedTwice = false;
  std::vector<std::uint8_t> m_trace;
};
