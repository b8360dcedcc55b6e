#include "tree/filter/trace_filter.h"

#include "documents/trace_doc.h"

namespace {

// A trace without a record of its own, read by its operations.
class EventFields {
 public:
  explicit EventFields(const TraceEvent_i& event) : m_event(event) {}
  int Attributes() const { return m_event.GetAttributes(); }
  NameId ComponentId() const { return m_event.GetComponentId(); }
  NameId CategoryId() const { return m_event.GetCategoryId(); }
  NameId AppId() const { return m_event.GetAppId(); }
  NameId MachineId() const { return m_event.GetMachineId(); }
  NameId PidId() const { return m_event.GetPidId(); }
  NameId TidId() const { return m_event.GetTidId(); }

 private:
  const TraceEvent_i& m_event;
};

void AddIds(std::map<NameId, int>& marks, const std::vector<NameId>& ids) {
  for (const NameId id : ids) marks.try_emplace(id, 1);
}

}  // namespace

CTraceFilter::CTraceFilter(const CTraceFilter& other) {
  CopyMarks(other);
}

CTraceFilter& CTraceFilter::operator=(const CTraceFilter& other) {
  if (this == &other) return *this;
  CopyMarks(other);
  // The marks that the caches point to have just been freed.
  m_componentCache = {};
  m_categoryCache = {};
  m_applicationCache = {};
  m_threadCache = {};
  return *this;
}

void CTraceFilter::CopyMarks(const CTraceFilter& other) {
  allTraces = other.allTraces;
  allSeverities = other.allSeverities;
  severities = other.severities;
  allComponents = other.allComponents;
  components = other.components;
  allCategories = other.allCategories;
  categories = other.categories;
  allApplications = other.allApplications;
  applications = other.applications;
  allThreads = other.allThreads;
  threads = other.threads;
  allAttributes = other.allAttributes;
  attributes = other.attributes;
}

int CTraceFilter::Matches(const TraceEvent_i& event) {
  if (allTraces) return 1;
  if (const std::uint8_t* record = event.Record()) return MatchesTrace(RawTrace(record));
  return MatchesTrace(EventFields(event));
}

int CTraceFilter::Matches(const RawTrace& trace) {
  return allTraces ? 1 : MatchesTrace(trace);
}

template <class Trace>
int CTraceFilter::MatchesTrace(const Trace& trace) {
  if (!allSeverities || !allAttributes) {
    const int traceAttributes = trace.Attributes();
    if (!SeverityPasses(traceAttributes) || !AttributesPass(traceAttributes)) return 0;
  }
  // The order matters: what fails one test never enters the maps of those behind it.
  return (allComponents || MarkPasses(m_componentCache, components, trace.ComponentId())) &&
         (allCategories || MarkPasses(m_categoryCache, categories, trace.CategoryId())) &&
         (allApplications || MarkPasses(m_applicationCache, applications, trace.AppId())) &&
         (allThreads || ThreadPasses(trace.MachineId(), trace.PidId(), trace.TidId()));
}

bool CTraceFilter::SeverityPasses(int traceAttributes) const {
  if (allSeverities) return true;
  if (traceAttributes & kAttributeInfo) return severities[0] == 1;
  if (traceAttributes & kAttributeWarn) return severities[1] == 1;
  if (traceAttributes & kAttributeError) return severities[2] == 1;
  // Kept: a trace without a severity is hidden even when each of the three is shown.
  return false;
}

bool CTraceFilter::AttributesPass(int traceAttributes) const {
  if (allAttributes) return true;
  return attributes[traceAttributes & kAttributeDeveloper ? 1 : 0] == 1 &&
         attributes[traceAttributes & kAttributeVerbose ? 3 : 2] == 1;
}

bool CTraceFilter::MarkPasses(MarkCache& cache, std::map<NameId, int>& marks, NameId id) {
  const std::size_t slot = id % MarkCache::kSlots;
  if (!cache.marks[slot] || cache.ids[slot] != id) {
    cache.marks[slot] = &marks.try_emplace(id, 1).first->second;
    cache.ids[slot] = id;
  }
  return *cache.marks[slot] == 1;
}

bool CTraceFilter::ThreadPasses(NameId machine, NameId process, NameId thread) {
  const std::uint64_t ids = std::uint64_t{machine} << 32 | std::uint64_t{process} << 16 | thread;
  // Multiplying by the golden ratio spreads ids that differ in any field over the top bits.
  ThreadSlot& slot = m_threadCache[(ids * 0x9E3779B97F4A7C15u) >> (64 - kThreadSlotBits)];
  if (!slot.machine || slot.ids != ids) slot = {ids, &threads[machine], nullptr, nullptr};
  if (slot.machine->allProcesses) return true;
  if (!slot.process) {
    const auto entry = slot.machine->processes.find(process);
    if (entry == slot.machine->processes.end()) return false;
    slot.process = &entry->second;
  }
  if (slot.process->allThreadsOfProcess) return true;
  if (!slot.thread) {
    const auto mark = slot.process->threadMarks.find(thread);
    if (mark == slot.process->threadMarks.end()) return false;
    slot.thread = &mark->second;
  }
  return *slot.thread == 1;
}

void CTraceFilter::MergeDocumentNames(const CTraceDoc& document) {
  const TraceIndexes& seen = document.m_indexes;
  AddIds(components, seen.components.Ids());
  AddIds(categories, seen.categories.Ids());
  AddIds(applications, seen.applications.Ids());
  for (const auto& [machine, seenProcesses] : seen.processes) {
    MachineFilterEntry& machineEntry = threads[machine];
    for (const auto& [process, seenThreads] : seenProcesses) {
      ProcessFilterEntry& processEntry = machineEntry.processes[process];
      for (const NameId thread : seenThreads) processEntry.threadMarks.try_emplace(thread, 1);
    }
  }
}
