// trc find: the traces of a file whose text matches, by the same test as the desktop's Find.
#pragma once

#include "commands/dump.h"

struct FindOptions {
  std::string pattern;
  bool expression = false;
  bool ignoreCase = false;
  bool wordSearch = false;
  bool countOnly = false;
  DumpOptions output;  // file, format and filter
};

// kExitGood: at least one matches; kExitNo: none does.
int RunFind(const FindOptions& options);
