// Puts a document's name ids in the place of a service's, by text.
//
// Shape    Document ids are numbered from 1 in the order in which texts come and stay what they are
//          over reconnects. Id 0 is "no name", as is an id that the service never explained. When
//          65,534 ids or the room for their texts are used up, all further texts share id 65,535,
//          whose name says so: never a wrong name.
// Owner    Borrows the map and only adds to it; what the map holds at first is used by text too.
// Threads  The thread that owns the map.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <unordered_map>

#include "quor/client/live_batch.h"
#include "records/name_map.h"

class NameMapper {
 public:
  static constexpr NameId kOverflowId = 0xFFFF;
  static constexpr const char* kOverflowName = "(more names than a monitor can tell apart)";
  static constexpr std::size_t kTextBytesMax = 64u << 20;

  explicit NameMapper(NameMap& names);
  // Writes the document's ids into one record; takes up the names that stand in front of it. To be
  // called for each trace of a batch in order, and once with index == Traces() behind the last.
  void Map(LiveBatch& batch, std::size_t index);

 private:
  using Table = std::array<NameId, kNameIds>;
  static NameId& EntryOf(Table& table, HubNameId id) { return table[IdNumber(id)]; }
  NameId IdOf(std::string_view text);

  struct TextHash {
    using is_transparent = void;
    std::size_t operator()(std::string_view text) const {
      return std::hash<std::string_view>()(text);
    }
  };

  NameMap& m_names;
  std::unordered_map<std::string, NameId, TextHash, std::equal_to<>> m_ids;  // by text
  std::unique_ptr<Table> m_stream, m_own;                                    // by the sender's id
  NameId m_overflowId = kOverflowId;
  std::size_t m_nextId = 1;
  std::size_t m_textBytes = 0;
  std::size_t m_nextName = 0;  // of the batch under way
};
