// trc find: the traces of a file whose text matches, by the same test as the desktop's Find.
#pragma once

#include "commands/dump.h"

struct FindOptions {
  std::string pattern;
  bool expression = false;
  bool ignoreCase = false;
  bool wordSearch = false;
  bool perl = false;    // PCRE2
  bool invert = false;  // those that do not match
  bool totalOnly = false;
  DumpOptions output;
};

// kExitGood: at least one matches; kExitNo: none does.
int RunFind(const FindOptions& options);
