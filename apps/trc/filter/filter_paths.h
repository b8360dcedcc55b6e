// What --uncheck PATH and --check PATH say: which traces a command shows.
//
// Shape    The steps of the command line in their order. Each brings one node of the tree of the
//          filter dialog to unchecked or checked as clicks on its box would. A path is the labels
//          below "All Traces" joined by "/": "All Severities/Warn",
//          "All Threads/web-1/PID:812/TID:7". The empty path is the root. A label that holds "/"
//          itself is written as it stands: of the labels that fit, the longest is tried first.
//          Nodes of one parent with the same label are one to a path.
// Errors   Words with near names.
// Threads  One.
//
// A command for a file: AddFilterOptions (filter_options.h), then Apply, or a ShownTraces
// (shown_traces.h), which walks what passes. One for live traces: a LiveFilter (live_filter.h).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tree/filter/filter_dialog.h"

class FilterPaths {
 public:
  void Add(std::string path, bool check) { m_steps.push_back({std::move(path), check}); }
  bool Empty() const { return m_steps.empty(); }
  // Is there a step on this branch, on a node below it, or on the root?
  bool Touch(std::string_view branch) const;

  // Gives the filter the names of the document and takes the steps. False when a path leads
  // nowhere: `why` is words for Complain, and the command ends with kExitBad.
  bool Apply(CTraceDoc& document, CTraceFilter& filter, std::string* why) const;

  // The same over the names that the filter has by now. A path that leads nowhere is left out and
  // given. The names are a copy: the dialog adds entries to its own, and a save would write them.
  std::vector<std::string> Take(Host& host, CTraceFilter& filter, NameMap names) const;
  // Is there a path that no name, whatever it is, can complete? Then `why` is words.
  bool HasHopeless(Host& host, std::string* why) const;

 private:
  struct Step {
    std::string path;
    bool check;
  };
  std::vector<Step> m_steps;
};

// The nodes that a path leads to, none when it leads nowhere.
std::vector<FilterNode*> FindFilterNodes(FilterNode& root, const std::string& path);
// "there is no "All Severities/Wran" in the filter; near it: "All Severities/Warn"".
std::string NoSuchPath(FilterNode& root, const std::string& path);
