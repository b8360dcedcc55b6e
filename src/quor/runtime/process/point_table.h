// The trace map of this process: points by component and category, and their settings words.
//
// Shape    Points of the same component and category share an entry. When the segment has no more
//          entries, all further points share the last one, whose category says so.
// Owner    Borrows the points of the application, for ever.
// Errors   No count in the segment is used: see NameTable.
// Threads  Under the runtime's lock.
#pragma once

#include "quor/quor.h"
#include "quor/ring/segment_map.h"
#include "quor/runtime/process/name_table.h"
#include "quor/settings/settings_text.h"

constexpr std::uint32_t kSettingsMask = 0x031F;  // the seven bits of a point
constexpr std::uint32_t kSupport = 7;            // until the service has sent its settings

class PointTable {
 public:
  static constexpr const char* kNoRoomCategory = "(no room for more trace points)";

  // Call it once, in zeroed storage.
  // The settings that points have when they are registered: `start`, or else `kept`. Both outlive
  // this.
  void Begin(const SegmentMap& segment, NameTable& names, const SettingsText& start,
             const SettingsText& kept);
  // Copies the entries with their settings into another, empty segment.
  // REQUIRES: the segment has memory for them.
  void Move(const SegmentMap& segment);
  // Enters the point and sets its fields, the settings last.
  void Register(quor_point* point, NameTable& names);
  // Copies the settings of the segment into every registered point.
  void TakeSettings();
  // All bits that are set in any entry of the segment.
  std::uint32_t AnySettings() const;
  std::uint32_t Count() const { return m_count.load(std::memory_order_relaxed); }

 private:
  std::uint32_t EntryOf(AppNameId component, AppNameId category, const NameTable& names);
  std::uint32_t FirstSettings(const SegmentPoint& entry, const NameTable& names) const;

  static constexpr std::uint32_t kSlots = 4 * kSegmentPoints;
  SegmentHeader* m_header;
  BackedMemory m_memory;
  SegmentPoint* m_entries;
  std::uint32_t m_capacity;
  std::atomic<std::uint32_t> m_count;  // of entries; atomic for AnySettings
  AppNameId m_noRoomComponent, m_noRoomCategory;
  const SettingsText* m_start;
  const SettingsText* m_kept;
  quor_point* m_points;           // registered, linked by `next`
  std::uint16_t m_slots[kSlots];  // entry + 1; 0: free
};
