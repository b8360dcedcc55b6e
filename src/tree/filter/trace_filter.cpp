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

// Traces vary, so that a branch on a mark is often guessed wrongly. While all ids are known, which
// is nearly always, the marks are therefore combined without one. An unknown id behind a test that
// fails is never asked for, and does not matter.
template <class Trace>
int CTraceFilter::MatchesTrace(const Trace& trace) {
  bool shown = true, known = true;
  if (!allSeverities || !allAttributes) {
    const int traceAttributes = trace.Attributes();
    shown = SeverityPasses(traceAttributes) & AttributesPass(traceAttributes);
  }
  const auto ask = [&](const MarkCache& cache, NameId id) {
    const MarkSlot& slot = cache[id % cache.size()];
    known &= (slot.id == id) | !shown;
    shown &= *slot.mark == 1;
  };
  if (!allComponents) ask(m_componentCache, trace.ComponentId());
  if (!allCategories) ask(m_categoryCache, trace.CategoryId());
  if (!allApplications) ask(m_applicationCache, trace.AppId());
  if (!allThreads) {
    const std::uint64_t ids = IdsOf(trace.MachineId(), trace.PidId(), trace.TidId());
    const ThreadSlot& slot = m_threadCache[SlotOf(ids)];
    const bool passes =
        (*slot.allProcesses != 0) | (*slot.allThreadsOfProcess != 0) | (*slot.thread == 1);
    // Without its thread a slot only knows what passes as a whole.
    known &= ((slot.ids == ids) & (passes | (slot.thread != &kNoMark))) | !shown;
    shown &= passes;
  }
  return known ? shown : MatchesNewIds(trace);
}

// The tests in their order, which matters here: what fails one never enters the maps of those
// behind it.
template <class Trace>
int CTraceFilter::MatchesNewIds(const Trace& trace) {
  const int traceAttributes = trace.Attributes();
  return SeverityPasses(traceAttributes) && AttributesPass(traceAttributes) &&
         (allComponents || MarkPasses(m_componentCache, components, trace.ComponentId())) &&
         (allCategories || MarkPasses(m_categoryCache, categories, trace.CategoryId())) &&
         (allApplications || MarkPasses(m_applicationCache, applications, trace.AppId())) &&
         (allThreads || ThreadPasses(trace.MachineId(), trace.PidId(), trace.TidId()));
}

bool CTraceFilter::SeverityPasses(int traceAttributes) const {
  static constexpr std::array<std::uint8_t, kSeverityMask + 1> kLowestBit = {0, 0, 1, 0,
                                                                             2, 0, 1, 0};
  if (allSeverities) return true;
  // Kept: a trace without a severity is hidden even when each of the three is shown.
  const auto bits = static_cast<std::size_t>(traceAttributes & kSeverityMask);
  return (bits != 0) & (severities[kLowestBit[bits]] == 1);
}

bool CTraceFilter::AttributesPass(int traceAttributes) const {
  if (allAttributes) return true;
  const std::size_t developer = (traceAttributes & kAttributeDeveloper) != 0;
  const std::size_t verbose = (traceAttributes & kAttributeVerbose) != 0;
  return (attributes[developer] == 1) & (attributes[2 + verbose] == 1);
}

bool CTraceFilter::MarkPasses(MarkCache& cache, std::map<NameId, int>& marks, NameId id) {
  MarkSlot& slot = cache[id % cache.size()];
  if (slot.id != id) slot = {&marks.try_emplace(id, 1).first->second, id};
  return *slot.mark == 1;
}

bool CTraceFilter::ThreadPasses(NameId machine, NameId process, NameId thread) {
  const std::uint64_t ids = IdsOf(machine, process, thread);
  ThreadSlot& slot = m_threadCache[SlotOf(ids)];
  const MachineFilterEntry& machineEntry = threads[machine];
  slot = {&machineEntry.allProcesses, &kNoMark, &kNoMark, ids};
  const auto processEntry = machineEntry.processes.find(process);
  if (processEntry == machineEntry.processes.end()) return machineEntry.allProcesses != 0;
  const ProcessFilterEntry& marks = processEntry->second;
  slot.allThreadsOfProcess = &marks.allThreadsOfProcess;
  const bool whole = machineEntry.allProcesses || marks.allThreadsOfProcess;
  const auto mark = marks.threadMarks.find(thread);
  if (mark == marks.threadMarks.end()) return whole;
  slot.thread = &mark->second;
  return whole || mark->second == 1;
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
