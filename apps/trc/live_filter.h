// --uncheck and --check over live traces, whose names come with them.
//
// A trace is judged by the filter that the steps give over all names that came up to it, as if the
// dialog were opened anew: the answer is the one that a dump of the same traces would give. A path
// whose names have not come is kept until they do.
//
// Owner    Borrows the steps and the names of the stream.
// Threads  One.
#pragma once

#include <unordered_set>

#include "documents/trace_doc.h"
#include "filter_paths.h"
#include "terminal_host.h"

class LiveFilter {
 public:
  LiveFilter(const FilterPaths& paths, const NameMap& names) : m_paths(paths), m_names(names) {}

  bool Passes(const TraceEvent_i& trace);
  // The paths whose names have not come.
  const std::vector<std::string>& Missing() const { return m_missing; }

 private:
  bool Note(const TraceEvent_i& trace);

  const FilterPaths& m_paths;
  const NameMap& m_names;
  TerminalHost m_host;
  CTraceDoc m_seen{m_host};  // the ids that came; it has no traces
  std::unordered_set<std::uint64_t> m_threads;
  std::size_t m_ids = 0;
  CTraceFilter m_filter;
  std::vector<std::string> m_missing;
};
