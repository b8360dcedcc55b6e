#include "records/trace_list.h"

#include <cstring>
#include <utility>

TraceList_t& TraceList_t::operator=(TraceList_t&& other) noexcept {
  if (this == &other) return *this;
  Clear();
  m_next = std::exchange(other.m_next, nullptr);
  m_end = std::exchange(other.m_end, nullptr);
  m_blockEnd = std::exchange(other.m_blockEnd, 0);
  m_popped = std::exchange(other.m_popped, 0);
  m_elsewhere = std::exchange(other.m_elsewhere, 0);
  m_storage = std::move(other.m_storage);
  ++other.m_generation;
  return *this;
}

void TraceList_t::push_back(TraceEvent_i* event) {
  if (m_next == m_end) AddBlock();
  void* const words[2] = {nullptr, event};
  std::memcpy(m_next++, words, sizeof words);
  ++m_elsewhere;
}

void TraceList_t::Append(TraceList_t&& other) {
  const std::uint64_t end = End(), added = other.End();
  if (added == 0) return;
  m_end = m_next;  // the rest of the last block goes
  m_blockEnd = end;
  m_storage.Append(std::move(other.m_storage), end);
  m_next = std::exchange(other.m_next, nullptr);
  m_end = std::exchange(other.m_end, nullptr);
  m_blockEnd = end + std::exchange(other.m_blockEnd, 0);
  m_elsewhere += std::exchange(other.m_elsewhere, 0);
  ++other.m_generation;
}

void TraceList_t::PopFront() {
  const TraceSlot* const slot = m_storage.Blocks().SlotAt(m_popped);
  TraceEvent_i* const event = EventIn(slot);
  if (static_cast<const void*>(event) != slot) {
    --m_elsewhere;
    event->Release();
  }
  const auto& blocks = m_storage.Blocks().blocks;
  if (++m_popped < blocks.front().end) return;
  m_storage.DropFront();
  if (blocks.empty()) m_next = m_end = nullptr;
}

void TraceList_t::Clear() {
  if (m_elsewhere > 0) {
    ForEach(0, [](TraceEvent_i* event) { event->Release(); });
  }
  m_storage.Clear();
  m_next = m_end = nullptr;
  m_blockEnd = m_popped = m_elsewhere = 0;
  ++m_generation;
}

std::size_t TraceList_t::StorageBytes() const {
  return m_storage.StorageBytes();
}

void TraceList_t::AddBlock() {
  const TraceBlocks::Block& block = m_storage.Add(m_blockEnd);
  m_next = block.first;
  m_end = m_next + (block.end - block.begin);
  m_blockEnd = block.end;
}
