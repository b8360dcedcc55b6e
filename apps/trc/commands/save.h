// trc save: a document's save, all names anew, of all traces or those that pass a filter.
#pragma once

#include <string>

#include "filter/filter_paths.h"

struct SaveOptions {
  std::string in, out;
  FilterPaths filter;
};

int RunSave(const SaveOptions& options);
