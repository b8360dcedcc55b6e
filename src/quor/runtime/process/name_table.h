// The names of this process by text and by id: the content of the segment's name area.
//
// Shape    Ids count up from 0, which is the empty name. When the ids or the area are used up,
//          every further text gets kNoRoomId, whose name says so: never a wrong name.
// Owner    Tables of fixed size in static storage. Nothing is allocated, so a thread's first trace
//          may happen in a signal handler. The texts are in the segment.
// Errors   Only the texts of the segment are used. Another process that has it open may have
//          written to it, so no count in it is used.
// Threads  Enter and Move under the caller's lock. Text, for an id that was entered: any thread.
#pragma once

#include <string_view>

#include "quor/ring/segment_map.h"
#include "records/name_ids.h"

class NameTable {
 public:
  static constexpr AppNameId kNoRoomId{65535};
  static constexpr std::size_t kNameBytesMax = 4096;  // a longer name is cut
  static constexpr std::string_view kNoRoomText = "(no room for more names)";

  // Begins with the names 0 and kNoRoomId in an empty segment. Call it once, in zeroed storage.
  void Begin(const SegmentMap& segment);
  // Copies the names into another, empty segment. Ids stay the same.
  // REQUIRES: the segment has memory for them.
  void Move(const SegmentMap& segment);
  AppNameId Enter(std::string_view text);
  std::string_view Text(AppNameId id) const;
  std::uint32_t Count() const { return m_count; }
  std::uint32_t UsedBytes() const { return m_used; }

 private:
  static constexpr std::uint32_t kSlots = 131072;
  bool Append(AppNameId id, std::string_view text);

  BackedMemory m_memory;
  std::uint8_t* m_area;
  std::uint32_t m_capacity;
  std::atomic<std::uint32_t>* m_published;  // the bytes used, for the service
  std::uint32_t m_used;
  std::uint32_t m_count;              // ids given, without kNoRoomId
  std::uint32_t m_offsets[kNameIds];  // of the body in the area
  std::uint16_t m_lengths[kNameIds];  // of the text
  std::uint16_t m_slots[kSlots];      // id + 1; 0: free
};
