// The writing end of the ring: reserves space for one trace and commits it.
//
// Shape    The caller writes exactly the reserved bytes, in the form of RawTrace.
// Errors   False when the ring is full, or when there is no memory for its first lap. The trace is
//          then dropped and counted.
// Threads  Any number at the same time, also in a signal handler that interrupted another trace.
//          Never waits, allocates or locks.
#pragma once

#include "quor/ring/segment_map.h"

class RingProducer {
 public:
  struct Slot {
    std::uint8_t* record = nullptr;
    RingRecord* header = nullptr;
    std::uint64_t word = 0;
  };

  RingProducer() = default;
  // The segment is this process's own, empty, and outlives this.
  explicit RingProducer(const SegmentMap& segment);

  // REQUIRES: recordBytes <= kTraceBytesMax.
  bool Reserve(std::uint32_t recordBytes, Slot& slot) noexcept {
    const std::uint32_t size = (sizeof(RingRecord) + recordBytes + 7) / kRingUnitBytes;
    std::uint64_t mark = m_header->reserved.load(std::memory_order_relaxed);
    std::uint64_t position, padding;
    for (;;) {
      position = ring_mark::Units(mark);
      const std::uint64_t toEnd = m_units - (position & (m_units - 1));
      padding = size > toEnd ? toEnd : 0;
      if (__builtin_expect(!HasRoom(position, padding + size), 0)) {
        // The mark may be old, and the consumer may have passed it: only a current mark says
        // "full".
        const std::uint64_t now = m_header->reserved.load(std::memory_order_relaxed);
        if (now == mark) {
          CountDrops(1);
          return false;
        }
        mark = now;
        continue;
      }
      if (m_header->reserved.compare_exchange_weak(
              mark, ring_mark::Make(position + padding + size, ring_mark::Count(mark) + 1u),
              std::memory_order_relaxed))
        break;
    }
    if (padding != 0) {
      At(position)->word.store(ring_word::Make(position, padding, true) ^ m_salt,
                               std::memory_order_release);
      position = (position + padding) & ring_mark::kUnitMask;
    }
    slot.header = At(position);
    slot.record = reinterpret_cast<std::uint8_t*>(slot.header + 1);
    slot.word = ring_word::Make(position, size, false) ^ m_salt;
    slot.header->recordBytes = recordBytes;
    slot.header->drops = TakeDrops();
    return true;
  }

  void Commit(const Slot& slot) noexcept {
    slot.header->word.store(slot.word, std::memory_order_release);
    // No fence between the store and this load: see RingConsumer::BeginWait.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    if (__builtin_expect(m_header->consumerWaits.load(std::memory_order_relaxed) != 0, 0)) Wake();
  }

  void CountDrops(std::uint64_t traces) noexcept {
    m_header->dropped.fetch_add(traces, std::memory_order_relaxed);
    m_header->pendingDrops.fetch_add(traces, std::memory_order_relaxed);
  }

 private:
  RingRecord* At(std::uint64_t position) const {
    return reinterpret_cast<RingRecord*>(m_ring + (position & (m_units - 1)) * kRingUnitBytes);
  }

  // Reads the consumer's cache line only if the last known position leaves no space.
  bool HasRoom(std::uint64_t position, std::uint64_t size) noexcept {
    const std::uint64_t seen = m_header->consumedSeen.load(std::memory_order_acquire);
    return ring_mark::Distance(ring_mark::Units(seen), position + size) <= m_units ||
           FindRoom(position + size);
  }

  std::uint32_t TakeDrops() noexcept {
    const bool none = m_header->pendingDrops.load(std::memory_order_relaxed) == 0;
    return __builtin_expect(none, 1) ? 0 : TakeSomeDrops();
  }
  bool FindRoom(std::uint64_t end) noexcept;
  void SeeRoom(std::uint64_t consumed) noexcept;
  std::uint32_t TakeSomeDrops() noexcept;
  void Wake() noexcept;

  SegmentHeader* m_header = nullptr;
  std::uint8_t* m_ring = nullptr;
  std::uint64_t m_units = 0;
  std::uint64_t m_salt = 0;
  BackedMemory m_memory;
};
