#include "quor/runtime/process/point_table.h"

#include <algorithm>

void PointTable::Begin(const SegmentMap& segment, NameTable& names, const SettingsText& start,
                       const SettingsText& kept) {
  m_start = &start;
  m_kept = &kept;
  m_header = segment.Header();
  m_memory = segment.PointsMemory();
  m_entries = segment.Points();
  m_capacity = std::min(segment.Layout().pointCapacity, kSegmentPoints);
  m_noRoomComponent = names.Enter("Quor");
  m_noRoomCategory = names.Enter(kNoRoomCategory);
  m_points = nullptr;
  m_count.store(0, std::memory_order_relaxed);
  m_header->defaultSettings.store(kSupport, std::memory_order_relaxed);
}

void PointTable::Move(const SegmentMap& segment) {
  const std::uint32_t count = Count();
  m_memory = segment.PointsMemory();
  m_memory.Reach(count * sizeof(SegmentPoint));
  SegmentPoint* const entries = segment.Points();
  for (std::uint32_t i = 0; i < count; ++i) {
    entries[i].settings.store(m_entries[i].settings.load(std::memory_order_relaxed),
                              std::memory_order_relaxed);
    entries[i].component = m_entries[i].component;
    entries[i].category = m_entries[i].category;
  }
  segment.Header()->defaultSettings.store(m_header->defaultSettings.load(std::memory_order_relaxed),
                                          std::memory_order_relaxed);
  segment.Header()->pointCount.store(count, std::memory_order_release);
  m_header = segment.Header();
  m_entries = entries;
}

void PointTable::Register(quor_point* point, NameTable& names) {
  const AppNameId component = names.Enter(point->component ? point->component : "");
  const AppNameId category = names.Enter(point->category ? point->category : "");
  point->id = EntryOf(component, category, names);
  point->names[0] = __builtin_bswap16(IdNumber(component));
  point->names[1] = __builtin_bswap16(IdNumber(category));
  point->next = m_points;
  m_points = point;
  const std::uint32_t settings = m_entries[point->id].settings.load(std::memory_order_relaxed);
  __atomic_store_n(&point->settings, settings & kSettingsMask, __ATOMIC_RELEASE);
}

void PointTable::TakeSettings() {
  for (quor_point* point = m_points; point; point = point->next) {
    const std::uint32_t settings = m_entries[point->id].settings.load(std::memory_order_relaxed);
    __atomic_store_n(&point->settings, settings & kSettingsMask, __ATOMIC_RELAXED);
  }
}

std::uint32_t PointTable::AnySettings() const {
  const std::uint32_t count = m_count.load(std::memory_order_acquire);
  std::uint32_t any = 0;
  for (std::uint32_t i = 0; i < count; ++i)
    any |= m_entries[i].settings.load(std::memory_order_relaxed);
  return any;
}

std::uint32_t PointTable::FirstSettings(const SegmentPoint& entry, const NameTable& names) const {
  const std::string_view component = names.Text(entry.component),
                         category = names.Text(entry.category);
  if (const auto start = m_start->Of(component, category)) return *start | kStartSettings;
  if (const auto kept = m_kept->Of(component, category)) return *kept;
  return m_header->defaultSettings.load(std::memory_order_relaxed);
}

std::uint32_t PointTable::EntryOf(AppNameId component, AppNameId category, const NameTable& names) {
  const std::uint32_t key = (std::uint32_t{IdNumber(component)} << 16) | IdNumber(category);
  std::uint32_t slot = (key * 2654435761u) % kSlots;
  for (; m_slots[slot] != 0; slot = (slot + 1) % kSlots) {
    const SegmentPoint& entry = m_entries[m_slots[slot] - 1];
    if (entry.component == component && entry.category == category) return m_slots[slot] - 1u;
  }
  const std::uint32_t count = m_count.load(std::memory_order_relaxed);
  if (count == m_capacity) return count - 1;
  // Without memory for an entry of its own the point shares the last entry.
  if (!m_memory.Reach((count + 1) * sizeof(SegmentPoint))) return count == 0 ? 0 : count - 1;
  const bool last = count + 1 == m_capacity;
  m_entries[count].component = last ? m_noRoomComponent : component;
  m_entries[count].category = last ? m_noRoomCategory : category;
  m_entries[count].settings.store(FirstSettings(m_entries[count], names),
                                  std::memory_order_relaxed);
  m_count.store(count + 1, std::memory_order_release);
  m_header->pointCount.store(count + 1, std::memory_order_release);
  if (!last) m_slots[slot] = static_cast<std::uint16_t>(count + 1);
  return count;
}
