// trc save: a document's save, all names anew and all traces.
#pragma once

#include <string>

struct SaveOptions {
  std::string in, out;
};

int RunSave(const SaveOptions& options);
