// The slow paths of a producer.
#include "quor/ring/ring_producer.h"

#include <algorithm>

#include "quor/ring/wake_event.h"

RingProducer::RingProducer(const SegmentMap& segment)
    : m_header(segment.Header()),
      m_ring(segment.Ring()),
      m_units(segment.Layout().ringBytes / kRingUnitBytes),
      m_salt(segment.Layout().salt),
      m_memory(segment.RingMemory()) {
  m_memory.Reach(1);
  SeeRoom(0);
}

bool RingProducer::FindRoom(std::uint64_t end) noexcept {
  const std::uint64_t consumed = m_header->consumed.load(std::memory_order_acquire);
  const bool fits = ring_mark::Distance(ring_mark::Units(consumed), end) <= m_units;
  // One more unit, so that the consumer may look for the next record.
  if (!fits || !m_memory.Reach(std::min(end + 1, m_units) * kRingUnitBytes)) return false;
  SeeRoom(consumed);
  return true;
}

// In the first lap the space ends with the allocated memory. The stored value is the position that
// a consumer would have whose free space ends there.
void RingProducer::SeeRoom(std::uint64_t consumed) noexcept {
  const std::uint64_t backed = m_memory.Backed() / kRingUnitBytes;
  m_header->consumedSeen.store(
      m_memory.IsWhole() ? consumed : ring_mark::Make(backed - 1 - m_units, 0),
      std::memory_order_release);
}

std::uint32_t RingProducer::TakeSomeDrops() noexcept {
  const std::uint64_t drops = m_header->pendingDrops.exchange(0, std::memory_order_relaxed);
  if (drops <= UINT32_MAX) return static_cast<std::uint32_t>(drops);
  m_header->pendingDrops.fetch_add(drops - UINT32_MAX, std::memory_order_relaxed);
  return UINT32_MAX;
}

void RingProducer::Wake() noexcept {
  if (m_header->consumerWaits.exchange(0, std::memory_order_relaxed) == 0) return;
  m_header->consumerCalled.store(1, std::memory_order_relaxed);
  Signal(m_header->wakeEvent);
}
