#include "statistics/window/same_filter.h"

#include <set>

namespace {

std::set<NameId> HiddenIn(int all, const std::map<NameId, int>& marks) {
  std::set<NameId> hidden;
  if (all == 1) return hidden;
  for (const auto& [id, mark] : marks)
    if (mark != 1) hidden.insert(id);
  return hidden;
}

bool SameThreads(const CTraceFilter& a, const CTraceFilter& b) {
  if (a.allThreads != b.allThreads || a.threads.size() != b.threads.size()) return false;
  for (const auto& [machine, of] : a.threads) {
    const auto other = b.threads.find(machine);
    if (other == b.threads.end() || of.allProcesses != other->second.allProcesses ||
        of.processes.size() != other->second.processes.size())
      return false;
    for (const auto& [process, marks] : of.processes) {
      const auto same = other->second.processes.find(process);
      if (same == other->second.processes.end() || marks.threadMarks != same->second.threadMarks ||
          marks.allThreadsOfProcess != same->second.allThreadsOfProcess)
        return false;
    }
  }
  return true;
}

}  // namespace

bool ShowTheSame(const CTraceFilter& a, const CTraceFilter& b) {
  if (a.where != b.where) return false;
  if (a.allTraces == 1 && b.allTraces == 1) return true;
  return a.allTraces == b.allTraces && a.allSeverities == b.allSeverities &&
         a.severities == b.severities && a.allAttributes == b.allAttributes &&
         a.attributes == b.attributes &&
         HiddenIn(a.allComponents, a.components) == HiddenIn(b.allComponents, b.components) &&
         HiddenIn(a.allCategories, a.categories) == HiddenIn(b.allCategories, b.categories) &&
         HiddenIn(a.allApplications, a.applications) ==
             HiddenIn(b.allApplications, b.applications) &&
         ((a.allThreads == 1 && b.allThreads == 1) || SameThreads(a, b));
}
