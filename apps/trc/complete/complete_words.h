// What may stand at the end of a line of trc: names of applications and of their traces, settings,
// and paths of the filter. Options, commands and files are the shell's part.
//
// Threads  One.
#pragma once

#include <string>
#include <string_view>
#include <vector>

#include "filter/trace_choice.h"

class CompletionNames {
 public:
  virtual ~CompletionNames() = default;
  // "" is this machine.
  virtual std::vector<std::string> Apps(const std::string& machine) = 0;
  // "Net", "Net/Close".
  virtual std::vector<std::string> Traces(const std::string& machine, const std::string& app) = 0;
  // Of the filter of those of these words that are trace files, and of live traces. The nodes of
  // one level: those that begin with `prefix` and have no "/" of a path behind it.
  virtual std::vector<std::string> FilePaths(const std::vector<std::string>& words,
                                             std::string_view prefix) = 0;
  virtual std::vector<std::string> LivePaths(const std::string& machine,
                                             std::string_view prefix) = 0;
  // Of the traces of those words that are trace files, and of what may come live.
  virtual std::vector<std::string> FileNames(const std::vector<std::string>& words,
                                             ChoiceField field) = 0;
  virtual std::vector<std::string> LiveNames(const std::string& machine, ChoiceField field) = 0;
  // Of the desktop.
  virtual std::vector<std::string> Profiles() = 0;
};

// `words` stand behind "trc"; the last one, which may be empty, is completed. All answers begin
// with it, can be typed, and are no options unless it is one. Sorted.
std::vector<std::string> CompleteWords(const std::vector<std::string>& words,
                                       CompletionNames& names);
