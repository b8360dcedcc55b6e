// Converts traces of the older format to the current one.
//
// Shape    The older format has a space of keys for each kind of name. Here all names are in one
//          map, with ids from 0 in the order of their first use. Equal texts have one id, whatever
//          they name.
// Owner    Holds the names and the record of the last trace.
// Errors   None. A key without a name has the id 0. Names after the 65,536th get the id 0 too.
//          Names and texts are cut at 65,535 bytes. All of these are counted.
// Threads  One at a time.
#pragma once

#include <array>
#include <string_view>
#include <unordered_map>
#include <vector>

#include "records/old_walk.h"
#include "records/trace_event.h"

class OldTranslator {
 public:
  void Define(OldName kind, std::uint8_t key, std::string_view name);
  // The trace is valid until the next one is made.
  _TraceEvent_t Translate(const OldTrace& trace, std::string_view text);
  // All names so far, also those that no trace uses.
  NameMap& Names() { return m_names; }
  std::uint64_t CutTexts() const { return m_cutTexts; }
  // Name records whose name was cut.
  std::uint64_t CutNames() const { return m_cutNames; }
  // Names after the 65,536th.
  std::uint64_t LostNames() const { return m_lostNames; }

 private:
  NameId Intern(std::string_view name);
  NameId InternNumber(std::uint16_t number);
  NameId IdOf(OldName kind, std::uint8_t key) const {
    return m_ids[static_cast<std::size_t>(kind)][key];
  }

  NameMap m_names;
  std::unordered_map<std::string_view, NameId> m_idByName;  // views of the map's own texts
  std::array<std::array<NameId, 256>, kOldNameKinds> m_ids{};
  // Ids of the decimal texts of process and thread numbers, plus 1; 0: not looked up yet.
  std::vector<std::uint32_t> m_numberIds = std::vector<std::uint32_t>(kNameIds);
  std::vector<std::uint8_t> m_record;
  std::uint64_t m_cutTexts = 0, m_cutNames = 0, m_lostNames = 0;
};

// A time of the older format as packed date and time of day, UTC. Both are 0 from
// 0x8000000000000000 on, because the format's own system rejected such times.
struct PackedMoment {
  std::uint32_t date, time;
};
PackedMoment PackFileTime(std::uint64_t fileTime);
