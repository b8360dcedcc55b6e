// What a text can tell apart among machines with their processes and threads, and the marks for
// those that pass.
//
// Shape    A choice is a machine, a process and a thread, or several that are the same to the text.
//          Where names may come there are choices for what is not known yet.
// Owner    Borrows filter, names, tests, search and time.
// Threads  One.
#pragma once

#include <array>
#include <map>
#include <set>
#include <string>
#include <vector>

#include "tree/filter/text/filter_names.h"
#include "tree/filter/text/look_time.h"
#include "tree/filter/text/name_classes.h"
#include "tree/filter/trace_filter.h"

class ThreadChoices {
 public:
  static constexpr std::size_t kLooksMax = 2'000'000;  // at a name

  ThreadChoices(const CTraceFilter& filter, const FilterNames& names, const WhereTests& tests,
                WhereRegexSearch& search, LookTime* time);

  // There are too many to look at, or the time is over; nothing else may be asked then.
  bool IsTooLarge() const { return m_isTooLarge; }
  std::size_t Count() const { return m_choices.size(); }
  // By choice.
  std::vector<bool> PassesOf(const WhereRule& test) const;
  // Sets the marks so that these choices pass. Errors: false and the reason, where the marks show
  // or hide more among what comes later.
  bool Mark(const std::vector<bool>& passes, CTraceFilter& filter, std::string* why);

 private:
  using Choice = std::array<std::size_t, 3>;  // classes: machine, process, thread
  using Passes = std::vector<bool>;
  struct Known {
    NameSet processes;  // of one machine
    std::map<std::string, std::set<IdKey>> threads;
  };

  bool IsTooLarge(const WhereTests& tests) const;
  bool IsOver();
  void AddKnown();
  void AddLater(const WhereTests& tests);
  bool PassesAt(const Passes& passes, const std::string& machine, const std::string& process,
                const std::string& thread);
  void MarkKnown(const Passes& passes, CTraceFilter& filter);
  // Where names may come.
  bool AllPass(const Passes& passes, const std::string& machine, const std::string& process);
  bool AllPass(const Passes& passes, const std::string& machine);
  bool MarkMachine(const Passes& passes, const std::string& name, MachineFilterEntry& entry,
                   std::string* why);
  bool MarkProcess(const Passes& passes, const std::string& machine, const std::string& name,
                   ProcessFilterEntry& entry, std::string* why);
  NameSet MayComeOn(const std::string& machine) const;
  std::string NameOfId(NameId id) const { return NameOf(m_names.names, id); }

  const CTraceFilter& m_filter;
  const FilterNames& m_names;
  LookTime* const m_time;  // may be null
  NameClasses m_machineClasses, m_processClasses, m_threadClasses;
  std::map<Choice, std::size_t> m_choices;
  std::map<std::string, Known> m_known;        // by machine
  NameSet m_machines, m_processes, m_threads;  // known, and one of each kind that may come
  bool m_isTooLarge = false;
};
