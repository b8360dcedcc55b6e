// Name ids of several files as ids of one, by their texts.
//
// Owner    Owns the names of all. Borrows those of a file for a call.
// Errors   Translate: false when there are no ids left.
// Threads  One.
#pragma once

#include <functional>
#include <string>
#include <unordered_map>
#include <vector>

#include "records/name_map.h"
#include "records/trace_event.h"

class MergedNames {
 public:
  NameMap& Names() { return m_names; }
  // Ids without a name are the same in all files: the files of one program have the same ids.
  bool Translate(std::size_t file, const NameMap& names, NameId id, NameId& to);
  // The file has other names now, for all ids or for one. What was translated stays.
  void Forget(std::size_t file);
  void Forget(std::size_t file, NameId id);

 private:
  static constexpr std::int32_t kNew = -1;
  NameMap m_names;
  std::unordered_map<std::string, std::int32_t> m_byText;
  std::unordered_map<NameId, std::int32_t> m_nameless;
  std::vector<std::vector<std::int32_t>> m_known;  // by file and id
  std::size_t m_next = 0;
};

constexpr const char* kTooManyNames = "together the files have more than 65,536 names";

// Replaces the ids of a record's body. False: there are no ids left.
bool TranslateIds(MergedNames& to, std::size_t file, const NameMap& names, std::uint8_t* record);

// The id that an id becomes when ids are numbered anew.
using NewId = std::function<NameId(NameId)>;
// A trace with the new ids in place of this one, which is released. Null stays null.
// REQUIRES: it has a record.
TraceEvent_i* Renumbered(TraceEvent_i* trace, const NewId& newId);
