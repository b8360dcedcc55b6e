// trc stack: the call stacks of a file's traces, with the names of their functions.
#pragma once

#include <cstdint>
#include <limits>
#include <string>
#include <vector>

#include "filter/filter_paths.h"

struct StackOptions {
  std::string file;        // "-": standard input has the text of one stack
  std::uint64_t from = 0;  // index in the file of the first trace
  std::uint64_t count = std::numeric_limits<std::uint64_t>::max();
  std::vector<std::string> folders;  // with separate debug information or moved modules
  bool recorded = false;             // no names
  FilterPaths filter;
};

int RunStack(const StackOptions& options);
