// The marks of machines, processes and threads by what a filter text knows them by.
//
// Shape    Without the names below what is wholly shown. Where no names come any more, a node is
//          wholly shown if all below it are.
// Threads  Pure values.
#pragma once

#include <map>
#include <optional>
#include <string>

#include "tree/filter/text/filter_names.h"
#include "tree/filter/trace_filter.h"

struct ProcessMarks {
  bool whole = false;
  std::map<IdKey, bool> threads;

  bool ShowsNone() const;
  bool operator==(const ProcessMarks&) const = default;
};

struct MachineMarks {
  bool whole = false;
  std::map<ProcessKey, ProcessMarks> processes;

  bool ShowsNone() const;
  bool operator==(const MachineMarks&) const = default;
};

using ThreadMarks = std::map<std::string, MachineMarks>;

// Errors   Nothing, and a reason: two ids have the same name and not the same mark.
std::optional<ThreadMarks> ThreadMarksOf(const CTraceFilter& filter, const FilterNames& names,
                                         std::string* why);
// "two threads are named "main", and ...".
std::string SameNames(const char* what, const std::string& name);
