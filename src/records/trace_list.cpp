#include "records/trace_list.h"

#include <utility>

#include "base/page_storage.h"

TraceList_t& TraceList_t::operator=(TraceList_t&& other) noexcept {
  if (this == &other) return *this;
  Clear();
  m_next = std::exchange(other.m_next, nullptr);
  m_end = std::exchange(other.m_end, nullptr);
  m_blockEnd = std::exchange(other.m_blockEnd, 0);
  m_popped = std::exchange(other.m_popped, 0);
  m_elsewhere = std::exchange(other.m_elsewhere, 0);
  m_blocks = std::exchange(other.m_blocks, {});
  ++other.m_generation;
  return *this;
}

void TraceList_t::push_back(TraceEvent_i* event) {
  if (m_next == m_end) AddBlock();
  void* const words[2] = {nullptr, event};
  std::memcpy(m_next++, words, sizeof words);
  ++m_elsewhere;
}

void TraceList_t::PopFront() {
  const Place place = TraceBlocks::PlaceOf(m_popped);
  const Slot* const slot = m_blocks.SlotAt(m_popped);
  TraceEvent_i* const event = EventIn(slot);
  if (static_cast<const void*>(event) != slot) {
    --m_elsewhere;
    event->Release();
  }
  ++m_popped;
  if (place.slot + 1 == SlotsOf(place.block)) DropFrontBlock();
}

void TraceList_t::Clear() {
  if (m_elsewhere > 0) {
    ForEach(0, [](TraceEvent_i* event) { event->Release(); });
  }
  while (!m_blocks.blocks.empty()) DropFrontBlock();
  m_blocks.blocks.shrink_to_fit();
  m_blockEnd = m_popped = m_elsewhere = 0;
  m_blocks.first = 0;
  ++m_generation;
}

std::size_t TraceList_t::StorageBytes() const {
  std::size_t bytes = m_blocks.blocks.capacity() * sizeof(void*);
  for (std::size_t at = 0; at < m_blocks.blocks.size(); ++at) {
    bytes += SlotsOf(m_blocks.first + at) * sizeof(Slot);
  }
  return bytes;
}

void TraceList_t::AddBlock() {
  const std::size_t block = m_blocks.first + m_blocks.blocks.size();
  const std::size_t bytes = SlotsOf(block) * sizeof(Slot);
  m_blocks.blocks.reserve(m_blocks.blocks.size() + 1);
  void* const storage = block < TraceBlocks::kDoublings ? NewPages(bytes) : NewHugePages(bytes);
  m_blocks.blocks.push_back(static_cast<Slot*>(storage));
  m_next = m_blocks.blocks.back();
  m_end = m_next + SlotsOf(block);
  m_blockEnd += SlotsOf(block);
}

void TraceList_t::DropFrontBlock() {
  FreePages(m_blocks.blocks.front(), SlotsOf(m_blocks.first) * sizeof(Slot));
  m_blocks.blocks.erase(m_blocks.blocks.begin());
  ++m_blocks.first;
  // A new block follows on the number of this one.
  if (m_blocks.blocks.empty()) m_next = m_end = nullptr;
}
