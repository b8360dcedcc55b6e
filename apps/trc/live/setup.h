// trc setup: the walk of the wizard as one command. It uses the wizard's tables, so that it gives
// the same answers.
//
// Errors   The exit status, after messages on standard error. What can be done is done: a machine
//          or an application that cannot be had does not stop the others.
#pragma once

#include <optional>
#include <string>
#include <vector>

struct SetupOptions {
  std::vector<std::string> machines;  // none: this machine
  bool same = false;                  // all get what is chosen for the first
  std::vector<std::string> apps;      // none: all
  std::optional<unsigned> preset;     // the settings of all traces
  std::string file;                   // or those of this file; neither: as they are
  bool monitor = false;
  bool dryRun = false;
};
int RunSetup(const SetupOptions& options);
