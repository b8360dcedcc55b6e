// trc save: writes all traces, or those that pass a filter, with their names to a new file.
#pragma once

#include <string>

#include "filter/trace_options.h"

struct SaveOptions {
  std::string in, out;
  TraceOptions traces;
};

int RunSave(const SaveOptions& options);
