// The one pattern that the whole application has compiled last, and what matching it has shown.
//
// Threads  Interface thread.
#pragma once

#include "tree/regex/program/regex_opcodes.h"

struct RegexState_t {
  int wordSearch;  // a match begins and ends at the boundary of a word; `^` and `$` change sense
  const char* groupStart[kRegexGroups];  // in the latest attempt; null: not noted
  const char* matchStart;
  const char* matchEnd;  // one after the last byte
  int rangeLow;          // of the range being run: mandatory repetitions left
  int groupCount;        // groups that the compiler has opened
  unsigned char program[kRegexProgramBytes + kRegexSlackBytes];
  int anchored;  // the pattern began with an anchoring `^`, which has no opcode
  const char* groupEnd[kRegexGroups];
  int closedGroups;  // groups that the compiler has closed
  int rangeExtra;    // of the range being run: optional repetitions left
  int acrossLines;   // `.` and the starred narrow sets take CR and LF. Always 0 in this program
};

extern RegexState_t RegexState;
