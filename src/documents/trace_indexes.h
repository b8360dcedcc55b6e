// The ids that the traces of a document have used, updated as traces are added.
//
// Shape    Seven lists of ids in the order of their first use, and a map machine -> process ->
//          threads. Ids are never removed, not by trims and clears either.
// Threads  One at a time.
//
// Nearly every trace uses only known ids. So each field first checks a bit set, and the process map
// a small direct-mapped cache of whole triples, before any list or tree is touched.
#pragma once

#include <array>
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
    if (!m_seen.Has(id)) AddNew(id);
  }
  const std::vector<NameId>& Ids() const { return m_ids; }

 private:
  void AddNew(NameId id);
  IdSet<NameId> m_seen;
  std::vector<NameId> m_ids;
};

class TraceIndexes {
 public:
  void Note(const RawTrace& trace);
  void Note(const TraceEvent_i& event);  // by its record if it has one
  // As if the traces of the other came now, in their order.
  void Append(const TraceIndexes& later);

  ProcessMap processes;
  IdList machines, applications, components, categories, processIds, threadIds, sourceFiles;

 private:
  void NoteIds(NameId machine, NameId app, NameId component, NameId category, NameId pid,
               NameId tid, NameId file);
  std::array<std::uint64_t, 256> m_triples = {};  // machine, pid, tid and a used bit
};
