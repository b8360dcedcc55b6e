// trc filter: which traces options choose, as a filter text, or a filter text as the options.
#pragma once

#include <string>
#include <vector>

#include "filter/filter_paths.h"
#include "where/where_program.h"

struct FilterOptions {
  std::vector<std::string> files;  // none: only names that every filter has
  FilterPaths filter;
  WhereProgramPtr where;  // null: no --where
  bool paths = false;     // as --uncheck and --check
  bool live = false;      // further names may come
};

int RunFilter(const FilterOptions& options);
