// --uncheck, --check and --user for live traces, whose names come with them.
//
// A trace is tested with the filter that the steps give for all names that came before it, as if
// the dialog were opened again. So the answer is the same as that of a dump of these traces. A path
// whose names have not come waits until they do.
//
// Owner    Borrows the steps and the names of the stream.
// Threads  One.
#pragma once

#include <optional>
#include <unordered_set>

#include "documents/trace_doc.h"
#include "filter/filter_paths.h"
#include "terminal/terminal_host.h"

class LiveFilter {
 public:
  LiveFilter(const FilterPaths& paths, const NameMap& names);

  bool Passes(const TraceEvent_i& trace);
  // The paths whose names have not come.
  const std::vector<std::string>& Missing() const { return m_missing; }
  // Has a trace of the wanted account come?
  bool AccountCame() const { return m_accountCame; }
  // Ids mean other names from now on. What came has come.
  void ForgetIds();

 private:
  std::size_t Note(const TraceEvent_i& trace);
  void MakeFilter();

  const FilterPaths& m_paths;
  const NameMap& m_names;
  TerminalHost m_host;
  CTraceDoc m_seen{m_host};  // has the ids that came, but no traces
  // A branch without a step shows everything, whatever comes.
  const bool m_components, m_categories, m_applications, m_allThreads;
  std::unordered_set<std::uint64_t> m_threads;
  std::optional<std::size_t> m_ids;  // the number of ids in the filter; none: not made yet
  CTraceFilter m_filter;
  bool m_made = false, m_accountCame = false;
  std::vector<std::string> m_missing;
};
