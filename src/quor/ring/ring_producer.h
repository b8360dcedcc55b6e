// The application's end of the ring: reserves room for one trace and commits it.
//
// Shape    The caller writes exactly the bytes that it reserved, in the form of RawTrace.
// Errors   False when the ring is full: the trace is counted as dropped and forgotten.
// Threads  Any number at once, also in a signal handler that interrupted another trace. Nothing is
//          waited for, allocated or locked.
#pragma once

#include <unistd.h>

#include <cerrno>

#include "quor/ring/segment_map.h"

class RingProducer {
 public:
  struct Slot {
    std::uint8_t* record = nullptr;
    RingRecord* header = nullptr;
    std::uint64_t word = 0;
  };

  RingProducer() = default;
  // The segment outlives this. `eventDescriptor` is written when the consumer sleeps; -1 for never.
  RingProducer(const SegmentMap& segment, int eventDescriptor)
      : m_header(segment.Header()),
        m_ring(segment.Ring()),
        m_units(segment.Layout().ringBytes / kRingUnitBytes),
        m_salt(segment.Layout().salt),
        m_event(eventDescriptor) {}

  // REQUIRES: recordBytes <= kRawTraceBytesMax.
  bool Reserve(std::uint32_t recordBytes, Slot& slot) noexcept {
    const std::uint32_t size = (sizeof(RingRecord) + recordBytes + 7) / kRingUnitBytes;
    std::uint64_t mark = m_header->reserved.load(std::memory_order_relaxed);
    std::uint64_t position, padding;
    for (;;) {
      position = ring_mark::Units(mark);
      const std::uint64_t toEnd = m_units - (position & (m_units - 1));
      padding = size > toEnd ? toEnd : 0;
      if (__builtin_expect(!HasRoom(position, padding + size), 0)) {
        // Only a mark that still stands tells of a full ring: the consumer may overtake an old one.
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
    // No fence between the store and this load: RingConsumer::BeginWait tells how it lives with it.
    std::atomic_signal_fence(std::memory_order_seq_cst);
    if (__builtin_expect(m_header->consumerWaits.load(std::memory_order_relaxed) != 0, 0)) Wake();
  }

  void CountDrops(std::uint64_t traces) noexcept {
    m_header->dropped.fetch_add(traces, std::memory_order_relaxed);
    m_header->pendingDrops.fetch_add(traces, std::memory_order_relaxed);
  }
  // In the child of a fork: the number of the closed descriptor may soon be another file's.
  void Mute() noexcept { m_event = -1; }

 private:
  RingRecord* At(std::uint64_t position) const {
    return reinterpret_cast<RingRecord*>(m_ring + (position & (m_units - 1)) * kRingUnitBytes);
  }

  // Looks at the consumer's own line only when its last known place leaves no room.
  bool HasRoom(std::uint64_t position, std::uint64_t size) noexcept {
    const std::uint64_t end = position + size;
    std::uint64_t consumed = m_header->consumedSeen.load(std::memory_order_acquire);
    if (ring_mark::Distance(ring_mark::Units(consumed), end) <= m_units) return true;
    consumed = m_header->consumed.load(std::memory_order_acquire);
    m_header->consumedSeen.store(consumed, std::memory_order_release);
    return ring_mark::Distance(ring_mark::Units(consumed), end) <= m_units;
  }

  std::uint32_t TakeDrops() noexcept {
    if (__builtin_expect(m_header->pendingDrops.load(std::memory_order_relaxed) == 0, 1)) return 0;
    const std::uint64_t drops = m_header->pendingDrops.exchange(0, std::memory_order_relaxed);
    if (drops <= UINT32_MAX) return static_cast<std::uint32_t>(drops);
    m_header->pendingDrops.fetch_add(drops - UINT32_MAX, std::memory_order_relaxed);
    return UINT32_MAX;
  }

  __attribute__((noinline)) void Wake() noexcept {
    if (m_event < 0 || m_header->consumerWaits.exchange(0, std::memory_order_relaxed) == 0) return;
    const int error = errno;  // a signal handler must leave it alone
    const std::uint64_t one = 1;
    [[maybe_unused]] const ssize_t written = write(m_event, &one, sizeof one);
    errno = error;
  }

  SegmentHeader* m_header = nullptr;
  std::uint8_t* m_ring = nullptr;
  std::uint64_t m_units = 0;
  std::uint64_t m_salt = 0;
  int m_event = -1;
};
