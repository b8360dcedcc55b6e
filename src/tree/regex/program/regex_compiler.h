// Writes the program of a pattern.
//
// Errors   Throws what RegexRaise throws.
// Threads  Touches only its arguments.
#pragma once

#include "tree/regex/program/regex_opcodes.h"

struct RegexSource {
  const char* pattern;
  int delimiter = 0;  // the pattern ends there
  bool literal = false;
  bool ignoreCase = false;
  bool wordSearch = false;
};

// Of groups, as far as the pattern was compiled.
struct RegexCounts {
  int groupCount = 0;    // opened
  int closedGroups = 0;  // closed
  int anchored = 0;      // 1: the pattern began with an anchoring `^`, which has no opcode
};

// Gives the position after the program's last byte. A pattern that fails leaves its first part in
// the buffer.
// REQUIRES: kRegexSlackBytes of room after bufferEnd, because room is asked for once per item.
unsigned char* CompileRegex(const RegexSource& source, unsigned char* buffer,
                            unsigned char* bufferEnd, RegexCounts& counts);

// Throws a std::string, "Regular expression parser error: %d".
[[noreturn]] void RegexRaise(int code);
// The code of a program that has no room in the buffer.
constexpr int kRegexTooLong = 50;
