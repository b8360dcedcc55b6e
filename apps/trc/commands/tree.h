// trc tree: the procedure tree of a file, in the form of the desktop's tree and its export.
#pragma once

#include <string>
#include <vector>

#include "filter/trace_options.h"
#include "tree/proc/model/tree_text.h"

struct TreeOptions {
  std::vector<std::string> files;
  std::string out;         // not empty: writes the first machine like the desktop's export
  bool json = false;       // a line for each node, for other programs
  int depth = kAllLevels;  // how many levels are open
  TraceOptions traces;
};

int RunTree(const TreeOptions& options);
