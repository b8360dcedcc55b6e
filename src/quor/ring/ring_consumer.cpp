#include "quor/ring/ring_consumer.h"

#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <cstring>

namespace {

constexpr std::uint64_t kPageUnits = 4096 / kRingUnitBytes;

// volatile: the application may change the bytes under us, and each must be read once.
std::uint32_t ReadOnce(const std::uint32_t& from) {
  return *static_cast<const volatile std::uint32_t*>(&from);
}

}  // namespace

RingConsumer::RingConsumer(const SegmentMap& segment, std::size_t room)
    : m_header(segment.Header()),
      m_ring(segment.Ring()),
      m_ringUnits(segment.Layout().ringBytes / kRingUnitBytes),
      m_salt(segment.Layout().salt),
      m_file(segment.Descriptor()),
      m_ringOffset(segment.Layout().ringOffset),
      m_trace(room) {
  Resume();
}

void RingConsumer::Resume() {
  const std::uint64_t mark = m_header->consumed.load(std::memory_order_acquire);
  m_units = ring_mark::Units(mark);
  m_traces = ring_mark::Widen(m_header->consumedTraces.load(std::memory_order_relaxed),
                              ring_mark::Count(mark));
  m_drops = m_header->reportedDrops.load(std::memory_order_relaxed);
}

RingStep RingConsumer::Next(RingItem& item) {
  item = {};
  if (m_broken) return RingStep::Broken;
  // A lap has one padding record, and the ring bounds the records between two losses. So this loop
  // ends, and nothing that the application writes meanwhile makes it longer than one lap.
  for (std::uint64_t walked = 0; walked <= m_ringUnits;) {
    std::uint32_t size = 0;
    bool padding = false;
    const Look look = LookAt(m_units, size, padding);
    if (look == Look::Bad) return Break();
    if (look == Look::Nothing) break;
    walked += size;
    if (padding) {
      m_units = (m_units + size) & ring_mark::kUnitMask;
      continue;
    }
    const Look taken = TakeAt(size, item);
    m_units = (m_units + size) & ring_mark::kUnitMask;
    ++m_traces;
    m_lookedTwice = false;
    if (taken == Look::Trace) return RingStep::Item;
    ++item.damagedBefore;
  }
  return ReportsLosses(item) ? RingStep::Item : RingStep::Empty;
}

RingStep RingConsumer::NextOfDead(RingItem& item) {
  for (;;) {
    const RingStep step = Next(item);
    if (step != RingStep::Empty) return step;
    const std::uint64_t end = ring_mark::Units(m_header->reserved.load(std::memory_order_acquire));
    const std::uint64_t left = ring_mark::Distance(m_units, end);
    if (left > m_ringUnits) return Break();
    const Look look = SkipToCommitted(left);
    if (look == Look::Nothing) return RingStep::Later;
    if (look == Look::Trace) continue;
    m_units = end;
    return RingStep::Empty;
  }
}

std::uint64_t RingConsumer::Uncommitted() const {
  const std::uint64_t mark = m_header->reserved.load(std::memory_order_acquire);
  return (ring_mark::Count(mark) - m_traces) & ring_mark::kCountMask;
}

std::uint64_t RingConsumer::UnreportedDrops() const {
  const std::uint64_t dropped = m_header->dropped.load(std::memory_order_relaxed);
  return dropped - std::min(dropped, m_drops);
}

void RingConsumer::MarkDropsReported() {
  m_traces += Uncommitted();
  m_drops += UnreportedDrops();
}

void RingConsumer::Publish() {
  m_header->reportedDrops.store(m_drops, std::memory_order_relaxed);
  m_header->consumedTraces.store(m_traces, std::memory_order_relaxed);
  m_header->consumed.store(ring_mark::Make(m_units, m_traces), std::memory_order_release);
}

RingConsumer::Wait RingConsumer::BeginWait() {
  m_header->consumerWaits.exchange(1, std::memory_order_seq_cst);
  std::uint32_t size = 0;
  bool padding = false;
  if (LookAt(m_units, size, padding) != Look::Nothing ||
      m_header->pendingDrops.load(std::memory_order_relaxed) != 0) {
    EndWait();
    return Wait::Ready;
  }
  if (m_lookedTwice) return Wait::Asleep;
  m_lookedTwice = true;
  return Wait::Soon;
}

void RingConsumer::EndWait() {
  m_header->consumerWaits.store(0, std::memory_order_relaxed);
}

RingRecord* RingConsumer::At(std::uint64_t units) const {
  return reinterpret_cast<RingRecord*>(m_ring + (units & (m_ringUnits - 1)) * kRingUnitBytes);
}

RingConsumer::Look RingConsumer::LookAt(std::uint64_t units, std::uint32_t& size,
                                        bool& padding) const {
  const std::uint64_t word = At(units)->word.load(std::memory_order_acquire) ^ m_salt;
  if (ring_word::Position(word) != units) return Look::Nothing;
  size = ring_word::Size(word);
  padding = (word & ring_word::kPadding) != 0;
  const std::uint64_t toEnd = m_ringUnits - (units & (m_ringUnits - 1));
  if (size == 0 || size > toEnd) return Look::Bad;
  if (padding) return size == toEnd ? Look::Trace : Look::Bad;
  return size * kRingUnitBytes >= sizeof(RingRecord) + kTraceFixedBytes ? Look::Trace : Look::Bad;
}

RingConsumer::Look RingConsumer::TakeAt(std::uint32_t size, RingItem& item) {
  const RingRecord* const record = At(m_units);
  const std::uint32_t drops = ReadOnce(record->drops);
  const std::uint32_t bytes = ReadOnce(record->recordBytes);
  item.dropsBefore += drops;
  m_drops += drops;
  if (bytes > kTraceBytesMax || bytes > size * kRingUnitBytes - sizeof(RingRecord))
    return Look::Damaged;
  if (bytes > m_trace.size()) m_trace.resize(bytes);
  std::memcpy(m_trace.data(), record + 1, bytes);
  item.trace = Bytes(m_trace.data(), bytes);
  if (IsWholeTrace(item.trace)) return Look::Trace;
  item.trace = {};
  return Look::Damaged;
}

// How many units from there on lie in a hole of the file. To read them would take memory for it.
std::uint64_t RingConsumer::HoleAt(std::uint64_t units) const {
  const std::uint64_t at = units & (m_ringUnits - 1);
  const auto from = static_cast<off_t>(m_ringOffset + at * kRingUnitBytes);
  const off_t data = lseek(m_file, from, SEEK_DATA);
  if (data < 0) return errno == ENXIO ? m_ringUnits - at : 0;
  return std::min(m_ringUnits - at, static_cast<std::uint64_t>(data - from) / kRingUnitBytes);
}

// Trace: found. Nothing: not yet. Bad: there is none.
RingConsumer::Look RingConsumer::SkipToCommitted(std::uint64_t left) {
  std::uint64_t at = std::max<std::uint64_t>(m_skipped, 1);
  const std::uint64_t most = std::min(left, at + kSkipUnits);
  while (at < most) {
    const std::uint64_t units = (m_units + at) & ring_mark::kUnitMask;
    const std::uint64_t hole = units % kPageUnits == 0 ? HoleAt(units) : 0;
    std::uint32_t size = 0;
    bool padding = false;
    if (hole == 0 && LookAt(units, size, padding) == Look::Trace && size <= left - at) {
      m_units = units;
      m_skipped = 0;
      return Look::Trace;
    }
    at += std::max<std::uint64_t>(hole, 1);
  }
  m_skipped = at < left ? at : 0;
  return at < left ? Look::Nothing : Look::Bad;
}

RingStep RingConsumer::Break() {
  m_broken = true;
  return RingStep::Broken;
}

bool RingConsumer::ReportsLosses(RingItem& item) {
  if (m_header->pendingDrops.load(std::memory_order_relaxed) != 0) {
    const std::uint64_t drops = m_header->pendingDrops.exchange(0, std::memory_order_relaxed);
    item.dropsBefore += drops;
    m_drops += drops;
  }
  return item.dropsBefore != 0 || item.damagedBefore != 0;
}
