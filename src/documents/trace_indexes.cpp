#include "documents/trace_indexes.h"

void IdList::AddNew(NameId id) {
  m_seen.Add(id);
  m_ids.push_back(id);
}

void TraceIndexes::NoteIds(const RawTrace& trace) {
  NoteIds(trace.MachineId(), trace.AppId(), trace.ComponentId(), trace.CategoryId(), trace.PidId(),
          trace.TidId(), trace.SourceFileId());
}

void TraceIndexes::Note(const TraceEvent_i& event) {
  if (const std::uint8_t* const record = event.Record()) {
    Note(RawTrace(record));
  } else {
    NoteIds(event.GetMachineId(), event.GetAppId(), event.GetComponentId(), event.GetCategoryId(),
            event.GetPidId(), event.GetTidId(), event.GetSourceFileId());
  }
}

void TraceIndexes::Append(const TraceIndexes& later) {
  constexpr IdList TraceIndexes::*kLists[] = {
      &TraceIndexes::machines,   &TraceIndexes::applications, &TraceIndexes::components,
      &TraceIndexes::categories, &TraceIndexes::processIds,   &TraceIndexes::threadIds,
      &TraceIndexes::sourceFiles};
  for (const auto list : kLists)
    for (const NameId id : (later.*list).Ids()) (this->*list).Add(id);
  for (const auto& [machine, pids] : later.processes) {
    auto& known = processes[machine];
    for (const auto& [pid, tids] : pids) known[pid].insert(tids.begin(), tids.end());
  }
}

void TraceIndexes::NoteIds(NameId machine, NameId app, NameId component, NameId category,
                           NameId pid, NameId tid, NameId file) {
  constexpr std::uint64_t kUsed = std::uint64_t{1} << 48;
  const std::uint64_t triple =
      kUsed | std::uint64_t{machine} << 32 | std::uint64_t{pid} << 16 | tid;
  // The top byte of a multiplicative hash chooses one of the 256 places.
  std::uint64_t& place = m_triples[(triple * 0x9E3779B97F4A7C15u) >> 56];
  if (place != triple) {
    processes[machine][pid].insert(tid);
    place = triple;
  }
  machines.Add(machine);
  applications.Add(app);
  components.Add(component);
  categories.Add(category);
  processIds.Add(pid);
  threadIds.Add(tid);
  sourceFiles.Add(file);
}
