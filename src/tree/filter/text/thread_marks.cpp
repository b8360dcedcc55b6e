#include "tree/filter/text/thread_marks.h"

#include <algorithm>
#include <utility>

#include "base/fail_with.h"
#include "where/text/where_writer.h"

namespace {

// The marks of one id. Below what is wholly shown its own marks do not count.
std::optional<ProcessMarks> MarksOf(const ProcessFilterEntry& entry, bool whole,
                                    const FilterNames& names, std::string* why) {
  ProcessMarks process;
  process.whole = whole || entry.allThreadsOfProcess != 0;
  // Where names may come the threads of a whole process are not asked for.
  if (process.whole && names.mayGrow) return process;
  for (const auto& [id, mark] : entry.threadMarks) {
    const std::string name = NameOf(names.names, id);
    const bool shown = process.whole || mark == 1;
    if (process.threads.emplace(IdKey::Of(name), shown).first->second != shown)
      return FailWith(why, SameNames("threads", name), std::optional<ProcessMarks>());
  }
  return process;
}

// Of another id with the same key. What comes later below the one does not below the other, so
// where names may come both must have the same marks.
bool Join(ProcessMarks& process, const ProcessMarks& more, const FilterNames& names) {
  if (names.mayGrow) return process == more;
  process.whole = process.whole && more.whole;
  for (const auto& [key, shown] : more.threads)
    if (process.threads.emplace(key, shown).first->second != shown) return false;
  return true;
}

bool Join(MachineMarks& machine, const MachineMarks& more, const FilterNames& names,
          std::string* why) {
  for (const auto& [key, process] : more.processes) {
    const auto [at, isNew] = machine.processes.emplace(key, process);
    if (!isNew && !Join(at->second, process, names))
      return FailWith(why, SameNames("processes", key.pid.text));
  }
  machine.whole = machine.whole && more.whole;
  return true;
}

std::optional<MachineMarks> MarksOf(const MachineFilterEntry& entry, const FilterNames& names,
                                    std::string* why) {
  MachineMarks machine;
  machine.whole = entry.allProcesses != 0;
  if (machine.whole && names.mayGrow) return machine;
  for (const auto& [id, processEntry] : entry.processes) {
    auto process = MarksOf(processEntry, machine.whole, names, why);
    if (!process) return std::nullopt;
    MachineMarks one;
    one.whole = machine.whole;
    one.processes.emplace(ProcessKey::Of(NameOf(names.names, id)), std::move(*process));
    if (!Join(machine, one, names, why)) return std::nullopt;
  }
  return machine;
}

// No thread and no process comes any more.
void Complete(ThreadMarks& machines) {
  for (auto& [name, machine] : machines) {
    for (auto& [key, process] : machine.processes)
      if (!process.threads.empty())
        process.whole =
            std::ranges::all_of(process.threads, [](const auto& t) { return t.second; });
    if (!machine.processes.empty())
      machine.whole =
          std::ranges::all_of(machine.processes, [](const auto& p) { return p.second.whole; });
  }
}

}  // namespace

bool ProcessMarks::ShowsNone() const {
  return !whole && std::ranges::none_of(threads, [](const auto& one) { return one.second; });
}

bool MachineMarks::ShowsNone() const {
  return !whole &&
         std::ranges::all_of(processes, [](const auto& one) { return one.second.ShowsNone(); });
}

std::optional<ThreadMarks> ThreadMarksOf(const CTraceFilter& filter, const FilterNames& names,
                                         std::string* why) {
  ThreadMarks machines;
  for (const auto& [id, entry] : filter.threads) {
    auto machine = MarksOf(entry, names, why);
    if (!machine) return std::nullopt;
    const std::string name = NameOf(names.names, id);
    const auto [at, isNew] = machines.try_emplace(name, *machine);
    if (isNew) continue;
    if (names.mayGrow && at->second != *machine)
      return FailWith(why, SameNames("machines", name), std::optional<ThreadMarks>());
    if (!Join(at->second, *machine, names, why)) return std::nullopt;
  }
  if (!names.mayGrow) Complete(machines);
  return machines;
}

std::string SameNames(const char* what, const std::string& name) {
  return std::string("two ") + what + " are named " + WhereQuoted(name) +
         ", and the tree shows one of them; a text cannot tell them apart";
}
