// Which traces a view shows: yes/no marks by severity, attribute, component, category, application,
// and machine with process and thread; and a filter text, which filters what the marks let through.
//
// Shape    A mark is an int, 1 for shown; anything else counts as 0. Keys are name ids.
// Owner    By value, one per view. Adding entries does not move the others, because the filter
//          dialog holds pointers to marks. REQUIRES: entries of the maps are added and changed,
//          never removed. A whole filter may be assigned while no dialog is open on it; ShowAll may
//          be called at any time.
// Errors   None.
// Threads  Interface thread: Matches adds ids that it does not know.
//
// Matches evaluates the current marks, and the text of a trace of a document. For a walk over many
// traces use a FilterPass (filter_pass.h).
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <vector>

#include "records/name_map.h"
#include "records/raw_trace.h"
#include "records/trace_event.h"
#include "where/where_marks.h"
#include "where/where_program.h"

class CTraceDoc;

struct ProcessFilterEntry {
  std::map<NameId, int> threadMarks;
  int allThreadsOfProcess = 1;
};

struct MachineFilterEntry {
  std::map<NameId, ProcessFilterEntry> processes;
  int allProcesses = 1;
};

class CTraceFilter {
 public:
  // 1 if the trace passes, else 0. An unknown component, category, application or machine is added
  // as shown and passes. Kept: an unknown process or thread under a parent that is not wholly shown
  // fails, and only MergeDocumentNames adds it.
  // These two know no names, so they leave the text out.
  int Matches(const TraceEvent_i& event);
  int Matches(const RawTrace& trace);
  // The marks and the text. The document has the names, the trace before and the newest one.
  int Matches(const TraceEvent_i& event, const CTraceDoc& document);
  // Adds every id of the document as shown; existing marks stay.
  void MergeDocumentNames(const CTraceDoc& document);
  // Sets every mark to shown and removes the text; the entries stay.
  void ShowAll();
  // Does every trace pass, also one to come?
  bool ShowsAll() const { return allTraces && !where; }
  // May a single trace take long, because its texts are searched?
  bool IsSlow() const { return where && !where->IsOfIds(); }

  int allTraces = 1;
  int allSeverities = 1;
  std::vector<int> severities = {1, 1, 1};  // Info, Warn, Error; never resized
  int allComponents = 1;
  std::map<NameId, int> components;
  int allCategories = 1;
  std::map<NameId, int> categories;
  int allApplications = 1;
  std::map<NameId, int> applications;
  int allThreads = 1;
  std::map<NameId, MachineFilterEntry> threads;
  int allAttributes = 1;
  // Without developer, developer, without verbose, verbose, unused. [0] and [2] stay 1: nothing in
  // the user interface changes them.
  std::vector<int> attributes = {1, 1, 1, 1, 1};
  WhereProgramPtr where;  // null: no text
  // What the user has said of the traces, for the text; null: nothing.
  std::shared_ptr<const WhereMarks> noted;

 private:
  template <class Trace>
  int MatchesTrace(const Trace& trace);
  bool SeverityPasses(int traceAttributes) const;
  bool AttributesPass(int traceAttributes) const;
  bool ThreadPasses(NameId machine, NameId process, NameId thread);
  friend class FilterPass;
};
