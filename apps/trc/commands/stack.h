// trc stack: the call stacks of a file's traces, with the names of their functions.
#pragma once

#include <string>
#include <vector>

#include "filter/trace_options.h"

struct StackOptions {
  std::vector<std::string> files;    // "-" first: standard input has the text of one stack
  std::vector<std::string> folders;  // with separate debug information or moved modules
  bool recorded = false;             // no names
  TraceOptions traces;
};

int RunStack(const StackOptions& options);
