#include "tree/filter/text/thread_choices.h"

#include <algorithm>

#include "base/fail_with.h"
#include "where/text/where_writer.h"

namespace {

using F = WhereField;

WhereTests Only(const WhereTests& tests, std::initializer_list<F> fields) {
  WhereTests some;
  for (const WhereRule* const test : tests)
    if (std::ranges::find(fields, test->field) != fields.end()) some.push_back(test);
  return some;
}

}  // namespace

ThreadChoices::ThreadChoices(const CTraceFilter& filter, const FilterNames& names,
                             const WhereTests& tests, WhereRegexSearch& search, LookTime* time)
    : m_filter(filter),
      m_names(names),
      m_time(time),
      m_machineClasses(Only(tests, {F::Machine}), search),
      m_processClasses(Only(tests, {F::Pid, F::Account}), search),
      m_threadClasses(Only(tests, {F::Tid}), search) {
  m_isTooLarge = IsTooLarge(tests);
  if (m_isTooLarge) return;
  AddKnown();
  if (names.mayGrow && !m_isTooLarge) AddLater(tests);
  // Without traces there is nothing to tell apart.
  if (m_choices.empty() && !m_isTooLarge)
    m_choices.try_emplace(
        {m_machineClasses.Of(""), m_processClasses.Of(""), m_threadClasses.Of("")}, 0);
}

// Each name is asked about in each test, and each number of a process may come with each account.
bool ThreadChoices::IsTooLarge(const WhereTests& tests) const {
  std::size_t entries = 0, pids = 1, accounts = 2;
  for (const auto& [machineId, machine] : m_filter.threads) {
    entries += 1 + machine.processes.size();
    pids += machine.processes.size();
    for (const auto& [processId, process] : machine.processes)
      entries += process.threadMarks.size();
  }
  for (const WhereRule* const test : tests) {
    if (test->field == F::Pid) pids += 2 * test->values.size();
    if (test->field == F::Account) accounts += test->values.size();
  }
  const bool both = m_names.mayGrow && accounts > 2;
  return entries * tests.size() > kLooksMax || (both && pids * accounts > kLooksMax / 20);
}

// What was looked at until then is not used.
bool ThreadChoices::IsOver() {
  m_isTooLarge = m_isTooLarge || (m_time && m_time->IsOver());
  return m_isTooLarge;
}

void ThreadChoices::AddKnown() {
  const auto add = [&](const std::string& machine, const std::string& process,
                       const std::string& thread) {
    m_choices.try_emplace(
        {m_machineClasses.Of(machine), m_processClasses.Of(process), m_threadClasses.Of(thread)},
        m_choices.size());
  };
  for (const auto& [machineId, machine] : m_filter.threads) {
    const std::string machineName = NameOfId(machineId);
    Known& known = m_known[machineName];
    m_machines.insert(machineName);
    if (machine.processes.empty()) add(machineName, {}, {});
    for (const auto& [processId, process] : machine.processes) {
      if (IsOver()) return;
      const std::string name = NameOfId(processId);
      known.processes.insert(name);
      m_processes.insert(name);
      if (process.threadMarks.empty()) add(machineName, name, {});
      for (const auto& [threadId, mark] : process.threadMarks) {
        if (IsOver()) return;
        const std::string thread = NameOfId(threadId);
        known.threads[name].insert(IdKey::Of(thread));
        m_threads.insert(thread);
        add(machineName, name, thread);
      }
    }
  }
}

// The processes that a machine can have: a later one is known by its number.
NameSet ThreadChoices::MayComeOn(const std::string& machine) const {
  NameSet some = m_processes;
  const auto known = m_known.find(machine);
  if (known == m_known.end()) return some;
  std::set<IdKey> pids;
  for (const std::string& name : known->second.processes) pids.insert(ProcessKey::Of(name).pid);
  std::erase_if(some, [&](const std::string& name) {
    return known->second.processes.contains(name) || pids.contains(ProcessKey::Of(name).pid);
  });
  return some;
}

void ThreadChoices::AddLater(const WhereTests& tests) {
  m_machines.merge(LaterNames(Only(tests, {F::Machine}), m_machines));
  m_processes.merge(LaterProcesses(Only(tests, {F::Pid}), Only(tests, {F::Account}), m_processes));
  m_threads.merge(LaterIds(Only(tests, {F::Tid}), m_threads));
  for (const std::string& thread : m_threads) {
    if (IsOver()) return;
    m_threadClasses.Of(thread);
  }
  m_choices.clear();
  std::size_t looks = 0;
  for (const std::string& machine : m_machines) {
    NameSet processes = MayComeOn(machine);
    if (const auto known = m_known.find(machine); known != m_known.end())
      processes.insert(known->second.processes.begin(), known->second.processes.end());
    for (const std::string& process : processes) {
      looks += m_threadClasses.Count();
      m_isTooLarge = m_isTooLarge || looks > kLooksMax;
      if (IsOver()) return;
      for (std::size_t thread = 0; thread < m_threadClasses.Count(); ++thread)
        m_choices.try_emplace({m_machineClasses.Of(machine), m_processClasses.Of(process), thread},
                              m_choices.size());
    }
  }
}

std::vector<bool> ThreadChoices::PassesOf(const WhereRule& test) const {
  const NameClasses* const all[] = {&m_machineClasses, &m_processClasses, &m_threadClasses};
  Passes passes(Count());
  for (std::size_t part = 0; part < std::size(all); ++part) {
    if (!all[part]->Has(test)) continue;
    const std::vector<bool> byClass = all[part]->PassesOf(test);
    for (const auto& [choice, place] : m_choices) passes[place] = byClass[choice[part]];
  }
  return passes;
}

bool ThreadChoices::PassesAt(const Passes& passes, const std::string& machine,
                             const std::string& process, const std::string& thread) {
  if (m_time && m_time->IsOver()) return false;
  return passes[m_choices.at(
      {m_machineClasses.Of(machine), m_processClasses.Of(process), m_threadClasses.Of(thread)})];
}

bool ThreadChoices::Mark(const Passes& passes, CTraceFilter& filter, std::string* why) {
  filter.allThreads = 1;
  if (!m_names.mayGrow) {
    MarkKnown(passes, filter);
    return true;
  }
  for (const std::string& name : m_machines)
    if (!m_known.contains(name) && !AllPass(passes, name))
      return FailWith(why,
                      "the filter dialog shows machines that come later; it can say "
                      "machine not in {...} of those that have come");
  for (auto& [id, machine] : filter.threads) {
    if (!MarkMachine(passes, NameOfId(id), machine, why)) return false;
    if (!machine.allProcesses) filter.allThreads = 0;
  }
  return true;
}

// No other names come, so each thread has a mark of its own.
void ThreadChoices::MarkKnown(const Passes& passes, CTraceFilter& filter) {
  for (auto& [machineId, machine] : filter.threads) {
    const std::string machineName = NameOfId(machineId);
    machine.allProcesses = 1;
    if (machine.processes.empty()) machine.allProcesses = PassesAt(passes, machineName, {}, {});
    for (auto& [processId, process] : machine.processes) {
      const std::string name = NameOfId(processId);
      process.allThreadsOfProcess = 1;
      if (process.threadMarks.empty())
        process.allThreadsOfProcess = PassesAt(passes, machineName, name, {});
      for (auto& [threadId, mark] : process.threadMarks) {
        mark = PassesAt(passes, machineName, name, NameOfId(threadId)) ? 1 : 0;
        if (!mark) process.allThreadsOfProcess = 0;
      }
      if (!process.allThreadsOfProcess) machine.allProcesses = 0;
    }
    if (!machine.allProcesses) filter.allThreads = 0;
  }
}

bool ThreadChoices::AllPass(const Passes& passes, const std::string& machine,
                            const std::string& process) {
  return std::ranges::all_of(m_threads, [&](const std::string& thread) {
    return PassesAt(passes, machine, process, thread);
  });
}

bool ThreadChoices::AllPass(const Passes& passes, const std::string& machine) {
  const auto all = [&](const NameSet& processes) {
    return std::ranges::all_of(
        processes, [&](const std::string& process) { return AllPass(passes, machine, process); });
  };
  const auto known = m_known.find(machine);
  return all(MayComeOn(machine)) && (known == m_known.end() || all(known->second.processes));
}

bool ThreadChoices::MarkMachine(const Passes& passes, const std::string& name,
                                MachineFilterEntry& entry, std::string* why) {
  entry.allProcesses = AllPass(passes, name) ? 1 : 0;
  if (entry.allProcesses) return true;
  const std::string shown = WhereQuoted(name);
  for (const std::string& process : MayComeOn(name))
    for (const std::string& thread : m_threads)
      if (PassesAt(passes, name, process, thread))
        return FailWith(why, "the filter dialog hides processes that come later on " + shown +
                                 ", because it does not show all of that machine");
  bool all = !entry.processes.empty();
  for (auto& [id, process] : entry.processes) {
    if (!MarkProcess(passes, name, NameOfId(id), process, why)) return false;
    all = all && process.allThreadsOfProcess;
  }
  return !all || FailWith(why, "the filter dialog shows processes that come later on " + shown +
                                   ", because it shows all that have come");
}

bool ThreadChoices::MarkProcess(const Passes& passes, const std::string& machine,
                                const std::string& name, ProcessFilterEntry& entry,
                                std::string* why) {
  entry.allThreadsOfProcess = AllPass(passes, machine, name) ? 1 : 0;
  if (entry.allThreadsOfProcess) return true;
  const std::set<IdKey>& known = m_known[machine].threads[name];
  for (const std::string& thread : m_threads)
    if (!known.contains(IdKey::Of(thread)) && PassesAt(passes, machine, name, thread))
      return FailWith(why, "the filter dialog hides threads that come later in process " +
                               WhereQuoted(name) + ", because it does not show all of it");
  bool all = !entry.threadMarks.empty();
  for (auto& [id, mark] : entry.threadMarks) {
    mark = PassesAt(passes, machine, name, NameOfId(id)) ? 1 : 0;
    all = all && mark;
  }
  return !all || FailWith(why, "the filter dialog shows threads that come later in process " +
                                   WhereQuoted(name) + ", because it shows all that have come");
}
