#include "tree/filter/trace_filter.h"

#include <algorithm>

#include "documents/trace_doc.h"
#include "tree/filter/filter_pass.h"

namespace {

// A trace without a record, read through its operations.
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

bool MarkPasses(std::map<NameId, int>& marks, NameId id) {
  return marks.try_emplace(id, 1).first->second == 1;
}

void AddIds(std::map<NameId, int>& marks, const std::vector<NameId>& ids) {
  for (const NameId id : ids) marks.try_emplace(id, 1);
}

}  // namespace

int CTraceFilter::Matches(const TraceEvent_i& event) {
  if (allTraces) return 1;
  if (const std::uint8_t* record = event.Record()) return MatchesTrace(RawTrace(record));
  return MatchesTrace(EventFields(event));
}

int CTraceFilter::Matches(const RawTrace& trace) {
  return allTraces ? 1 : MatchesTrace(trace);
}

// The order of the tests matters: an id of a trace that fails one test is not added by later tests.
template <class Trace>
int CTraceFilter::MatchesTrace(const Trace& trace) {
  const int traceAttributes = trace.Attributes();
  return SeverityPasses(traceAttributes) && AttributesPass(traceAttributes) &&
         (allComponents || MarkPasses(components, trace.ComponentId())) &&
         (allCategories || MarkPasses(categories, trace.CategoryId())) &&
         (allApplications || MarkPasses(applications, trace.AppId())) &&
         (allThreads || ThreadPasses(trace.MachineId(), trace.PidId(), trace.TidId()));
}

bool CTraceFilter::SeverityPasses(int traceAttributes) const {
  if (allSeverities) return true;
  if (traceAttributes & kAttributeInfo) return severities[0] == 1;
  if (traceAttributes & kAttributeWarn) return severities[1] == 1;
  // Kept: a trace without a severity is hidden even when each of the three is shown.
  return (traceAttributes & kAttributeError) && severities[2] == 1;
}

bool CTraceFilter::AttributesPass(int traceAttributes) const {
  if (allAttributes) return true;
  const std::size_t developer = (traceAttributes & kAttributeDeveloper) ? 1 : 0;
  const std::size_t verbose = (traceAttributes & kAttributeVerbose) ? 3 : 2;
  return attributes[developer] == 1 && attributes[verbose] == 1;
}

bool CTraceFilter::ThreadPasses(NameId machine, NameId process, NameId thread) {
  const MachineFilterEntry& machineEntry = threads[machine];
  if (machineEntry.allProcesses) return true;
  const auto processEntry = machineEntry.processes.find(process);
  if (processEntry == machineEntry.processes.end()) return false;
  if (processEntry->second.allThreadsOfProcess) return true;
  const auto mark = processEntry->second.threadMarks.find(thread);
  return mark != processEntry->second.threadMarks.end() && mark->second == 1;
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

int CTraceFilter::Matches(const TraceEvent_i& event, const CTraceDoc& document) {
  return where ? FilterPass(*this, document).Matches(event) : Matches(event);
}

void CTraceFilter::ShowAll() {
  where.reset();
  for (int* const all : {&allTraces, &allSeverities, &allComponents, &allCategories,
                         &allApplications, &allThreads, &allAttributes})
    *all = 1;
  for (std::vector<int>* const marks : {&severities, &attributes})
    std::fill(marks->begin(), marks->end(), 1);
  for (std::map<NameId, int>* const marks : {&components, &categories, &applications})
    for (auto& [id, mark] : *marks) mark = 1;
  for (auto& [machine, machineEntry] : threads) {
    machineEntry.allProcesses = 1;
    for (auto& [process, processEntry] : machineEntry.processes) {
      processEntry.allThreadsOfProcess = 1;
      for (auto& [thread, mark] : processEntry.threadMarks) mark = 1;
    }
  }
}
