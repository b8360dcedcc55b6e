// The options --uncheck PATH, --check PATH and --user NAME: which traces a command shows.
//
// Shape    The steps of the command line in their order. Each sets one node of the filter dialog's
//          tree to unchecked or checked, like clicks on its box. A path consists of the labels
//          below "All Traces" with "/" between them: "All Severities/Warn", "All
//          Threads/web-1/PID:812/TID:7". The empty path is the root. A label that contains "/" is
//          written as it is: of the labels that fit, the longest is tried first. Nodes of one
//          parent with the same label count as one. An account hides the processes of others,
//          after all steps.
// Errors   A message with near names.
// Threads  One.
//
// A command for a file uses AddFilterOptions (filter_options.h), then Apply or a ShownTraces
// (shown_traces.h), which iterates over the traces that pass. A command for live traces uses a
// LiveFilter (live_filter.h).
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "tree/filter/filter_dialog.h"

class FilterPaths {
 public:
  void Add(std::string path, bool check) { m_steps.push_back({std::move(path), check}); }
  void OnlyOf(std::string account) { m_account = std::move(account); }
  const std::string& Account() const { return m_account; }  // empty: all
  bool Empty() const { return m_steps.empty() && m_account.empty(); }
  // Is there a step on this branch, on a node below it, or on the root?
  bool Touch(std::string_view branch) const;

  // Adds the names of the document to the filter and applies the steps. False when a path has no
  // node: `why` is then a message for PrintError, and the command ends with kExitBad.
  bool Apply(CTraceDoc& document, CTraceFilter& filter, std::string* why) const;

  // The same with the current names of the filter. Paths without a node are skipped and returned.
  // The names are a copy: the dialog adds entries to its names, and a save would write them.
  // `accounts` gets that of each process.
  std::vector<std::string> Take(Host& host, CTraceFilter& filter, NameMap names,
                                std::vector<std::string>* accounts = nullptr) const;
  // Is there a path that no future name can complete? Then `why` is a message.
  bool HasImpossiblePath(Host& host, std::string* why) const;

 private:
  struct Step {
    std::string path;
    bool check;
  };
  std::vector<Step> m_steps;
  std::string m_account;
};

// The nodes of a path; none if the path has no node.
std::vector<FilterNode*> FindFilterNodes(FilterNode& root, const std::string& path);
// "there is no "All Severities/Wran" in the filter; near it: "All Severities/Warn"".
std::string NoSuchPath(FilterNode& root, const std::string& path);
