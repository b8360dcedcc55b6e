// trc save: writes all traces, or those that pass a filter, with their names to a new file.
#pragma once

#include <string>

#include "filter/filter_paths.h"

struct SaveOptions {
  std::string in, out;
  FilterPaths filter;
};

int RunSave(const SaveOptions& options);
