// The names of a hub: one space of 16-bit ids for all kinds of names and all streams.
//
// Shape    Text to id and back. Id 0 is the empty text. When the ids or the room for texts are used
//          up, every further text gets kOverflow, whose text says so: never a wrong name.
// Owner    Keeps its own copies. Texts given out are good until Clear.
// Threads  One.
#pragma once

#include <array>
#include <cstdint>
#include <deque>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "records/name_map.h"

class HubNames {
 public:
  static constexpr NameId kOverflow = 65535;
  static constexpr std::size_t kTextBytesMax = 64u << 20;

  HubNames() { Clear(); }

  // Enters the text if it is new. Cut at 65,535 bytes.
  NameId IdOf(std::string_view text);
  std::string_view Text(NameId id) const;
  // The whole record: tag, id, length, text.
  std::size_t RecordBytes(NameId id) const { return 5 + Text(id).size(); }
  void AppendRecord(NameId id, std::vector<std::uint8_t>& to) const;

  bool IsFull() const { return m_full; }
  std::size_t Count() const { return m_texts.size(); }
  // Ids mean something only within one generation. Clear begins the next.
  std::uint32_t Generation() const { return m_generation; }
  void Clear();

 private:
  std::deque<std::string> m_texts;  // by id; a deque, because the map looks into it
  std::unordered_map<std::string_view, NameId> m_ids;
  std::size_t m_bytes = 0;
  std::uint32_t m_generation = 0;
  bool m_full = false;
};

// The names of one source by its own ids, and what they are in a hub.
class SourceNames {
 public:
  SourceNames() : m_version(NextVersion()) {}

  // Entering an id again gives it another text.
  void Enter(NameId own, std::string_view text);
  bool Knows(NameId own) const { return m_texts.contains(own); }
  std::string TextOf(NameId own) const;
  // REQUIRES: Follow(hub) since the hub's last Clear. False: the source never entered this id.
  bool Find(NameId own, HubNames& hub, NameId& id) {
    const Page* const page = m_pages[own / kPageIds].get();
    const std::uint32_t known = page ? (*page)[own % kPageIds] : kUnknown;
    if (known == kUnknown) return Look(own, hub, id);
    id = static_cast<NameId>(known);
    return true;
  }
  // Forgets the ids of another hub or generation. True when it did.
  bool Follow(const HubNames& hub);
  std::size_t TextBytes() const { return m_textBytes; }
  // Changes whenever an id that was found before may mean something else; no two sources ever have
  // the same.
  std::uint64_t Version() const { return m_version; }

 private:
  static constexpr std::uint32_t kUnknown = 0xFFFFFFFF;
  // Most sources use few ids: made when the first of them is met.
  static constexpr std::size_t kPageIds = 256;
  using Page = std::array<std::uint32_t, kPageIds>;
  static std::uint64_t NextVersion();
  bool Look(NameId own, HubNames& hub, NameId& id);

  std::array<std::unique_ptr<Page>, 65536 / kPageIds> m_pages;
  std::unordered_map<NameId, std::string> m_texts;
  std::size_t m_textBytes = 0;
  const HubNames* m_hub = nullptr;
  std::uint32_t m_generation = 0;
  std::uint64_t m_version;
};
