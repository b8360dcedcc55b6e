// trc save: writes all traces, or those that pass a filter, with their names to a new file, and
// their marks and notes beside it.
#pragma once

#include <string>
#include <vector>

#include "filter/trace_options.h"

struct SaveOptions {
  std::vector<std::string> in;
  std::string out;
  TraceOptions traces;
  bool replaceNotes = false;  // those beside `out`
};

int RunSave(const SaveOptions& options);
