// The ids that the traces of a document have used, updated as traces are added.
//
// Shape    Seven lists of ids in the order of their first use, and a map machine -> process ->
//          threads. Ids are never removed, not by trims and clears either.
// Threads  One at a time.
//
// Nearly every trace has the ids of an earlier one. So a small direct-mapped cache knows whole sets
// of ids. Behind it each field checks a bit set, and the process map a cache of triples, before any
// list or tree is touched.
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
  void Note(const RawTrace& trace) {
    const TraceIdBytes ids = trace.IdBytes();
    Noted& place = m_noted[ids.Hash() >> (64 - kNotedBits)];
    if (place.is && place.ids == ids) return;
    place = {ids, true};
    NoteIds(trace);
  }
  void Note(const TraceEvent_i& event);  // by its record if it has one
  // As if the traces of the other came now, in their order.
  void Append(const TraceIndexes& later);

  ProcessMap processes;
  IdList machines, applications, components, categories, processIds, threadIds, sourceFiles;

 private:
  void NoteIds(NameId machine, NameId app, NameId component, NameId category, NameId pid,
               NameId tid, NameId file);
  void NoteIds(const RawTrace& trace);
  static constexpr unsigned kNotedBits = 10;
  struct Noted {
    TraceIdBytes ids;
    bool is = false;
  };
  std::array<Noted, std::size_t{1} << kNotedBits> m_noted = {};
  std::array<std::uint64_t, 256> m_triples = {};  // machine, pid, tid and a used bit
};
