// Replaces a service's name ids by a document's, by text.
//
// Shape    Document ids are numbered from 1 in the order in which texts come, and stay the same
//          over reconnects. Id 0 means "no name"; an id that the service never named becomes 0.
//          When 65,534 ids or the memory for their texts are used up, all further texts share id
//          65,535, whose name says so: never a wrong name.
// Owner    Borrows the map and only adds to it. Texts that are in the map at first are used too.
// Threads  The thread that owns the map.
#pragma once

#include <array>
#include <memory>
#include <string>
#include <unordered_map>

#include "quor/client/stream/live_batch.h"
#include "records/name_map.h"

class NameMapper {
 public:
  static constexpr NameId kOverflowId = 0xFFFF;
  static constexpr const char* kOverflowName = "(more names than a monitor can tell apart)";
  static constexpr std::size_t kTextBytesMax = 64u << 20;

  explicit NameMapper(NameMap& names);
  // Writes the document's ids into one record, after entering the names that precede it. Call it
  // for each trace of a batch in order, and at the end once with index == Traces().
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
  std::size_t m_nextName = 0;  // of the current batch
};
