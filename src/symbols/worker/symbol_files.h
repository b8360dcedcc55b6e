// The files that have a module's names: the module itself, and its separate debug information.
//
// A file counts only if its build id is the recorded one. It is looked for under the recorded path,
// then in the user's symbol folders: under the recorded path in the folder, under its bare name,
// and by its build id (.build-id/0a/1b...). Debug information is also looked for beside the module,
// in /usr/lib/debug, and where debuginfod-find puts what it has fetched.
//
// Threads  One.
#pragma once

#include <string>
#include <vector>

#include "symbols/recorded_stack.h"
#include "symbols/worker/regular_file.h"

struct SymbolFiles {
  RegularFile module, debug;  // either may be missing
  std::string modulePath, debugPath;
  // Empty if the module was found under its path. Otherwise says why it was not.
  std::string whyNotModule;
};

SymbolFiles FindSymbolFiles(const StackModule& module, const std::vector<std::string>& folders);
