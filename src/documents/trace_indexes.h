// Which ids a stream of traces has shown: kept beside the traces as they are added.
//
// Shape    Seven lists of ids in order of first sight, and a map machine -> process -> threads.
//          What was seen stays: trims and clears take nothing away.
// Threads  One at a time.
//
// Nearly every trace shows only ids that were seen before, so each field first asks a bit set, and
// the process map a small direct-mapped cache of whole triples, before any list or tree is touched.
#pragma once

#include <array>
#include <bitset>
#include <cstdint>
#include <map>
#include <set>
#include <vector>

#include "records/raw_trace.h"
#include "records/trace_event.h"

using ProcessMap = std::map<NameId, std::map<NameId, std::set<NameId>>>;

class IdList {
 public:
  void Add(NameId id) {
    if (!m_seen[id]) AddNew(id);
  }
  const std::vector<NameId>& Ids() const { return m_ids; }

 private:
  void AddNew(NameId id);
  std::bitset<65536> m_seen;
  std::vector<NameId> m_ids;
};

class TraceIndexes {
 public:
  void Note(const RawTrace& trace);
  void Note(const TraceEvent_i& event);  // by the record where there is one

  ProcessMap processes;
  IdList machines, applications, components, categories, processIds, threadIds, sourceFiles;

 private:
  void NoteIds(NameId machine, NameId app, NameId component, NameId category, NameId pid,
               NameId tid, NameId file);
  std::array<std::uint64_t, 256> m_triples = {};  // machine, pid, tid and a used bit
};
