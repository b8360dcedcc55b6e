#include "quor/runtime/process/name_table.h"

#include <cstring>

#include "quor/ring/cut_length.h"
#include "records/name_record.h"

namespace {

std::uint64_t Hash(std::string_view text) {
  std::uint64_t hash = 14695981039346656037u;
  for (const char c : text) hash = (hash ^ static_cast<unsigned char>(c)) * 1099511628211u;
  return hash ^ (hash >> 32);
}

}  // namespace

void NameTable::Begin(const SegmentMap& segment) {
  m_memory = segment.NamesMemory();
  m_area = segment.Names();
  m_capacity = segment.Layout().nameBytes;
  m_published = &segment.Header()->nameBytesUsed;
  m_used = 0;
  m_count = 0;
  // m_slots is zero already: writing it would cost the first trace a page fault for each page.
  Append(kNoRoomId, kNoRoomText);
  Enter({});
}

void NameTable::Move(const SegmentMap& segment) {
  m_memory = segment.NamesMemory();
  m_memory.Reach(m_used);
  std::memcpy(segment.Names(), m_area, m_used);
  m_area = segment.Names();
  m_published = &segment.Header()->nameBytesUsed;
  m_published->store(m_used, std::memory_order_release);
}

AppNameId NameTable::Enter(std::string_view text) {
  text = text.substr(0, CutLength(text.data(), text.size(), kNameBytesMax));
  std::uint32_t slot = Hash(text) % kSlots;
  for (; m_slots[slot] != 0; slot = (slot + 1) % kSlots) {
    const auto id = static_cast<AppNameId>(m_slots[slot] - 1);
    if (Text(id) == text) return id;
  }
  const auto id = static_cast<AppNameId>(m_count);
  if (m_count == IdNumber(kNoRoomId) || !Append(id, text)) return kNoRoomId;
  ++m_count;
  m_slots[slot] = static_cast<std::uint16_t>(m_count);
  return id;
}

std::string_view NameTable::Text(AppNameId id) const {
  const std::uint8_t* const body = m_area + m_offsets[IdNumber(id)];
  return {reinterpret_cast<const char*>(body) + kNameBodyBytes, m_lengths[IdNumber(id)]};
}

bool NameTable::Append(AppNameId id, std::string_view text) {
  const std::size_t bytes = kNameBodyBytes + text.size();
  if (m_capacity - m_used < bytes || !m_memory.Reach(m_used + bytes)) return false;
  m_offsets[IdNumber(id)] = m_used;
  m_lengths[IdNumber(id)] = static_cast<std::uint16_t>(text.size());
  m_used += static_cast<std::uint32_t>(StoreNameBody(m_area + m_used, id, text));
  m_published->store(m_used, std::memory_order_release);
  return true;
}
