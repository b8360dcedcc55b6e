// trc tree: the procedure tree of a file, as the desktop's tree shows and exports it.
#pragma once

#include <string>

#include "filter/filter_paths.h"
#include "tree/proc/model/tree_text.h"

struct TreeOptions {
  std::string file;
  std::string out;         // not empty: the first machine, as the desktop's export writes it
  std::string machine;     // empty: all
  int depth = kAllLevels;  // how many levels are open
  FilterPaths filter;
};

int RunTree(const TreeOptions& options);
