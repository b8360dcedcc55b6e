// A compiled pattern as a value: there may be any number of them.
//
// Shape    Opcodes (regex_opcodes.h), and what has none.
// Errors   Compiling throws what RegexRaise throws.
// Threads  Never changes once it is made, so threads may share it.
#pragma once

#include <vector>

#include "tree/regex/program/regex_opcodes.h"

struct RegexOptions {
  bool ignoreCase = false;
  bool literal = false;
  bool wordSearch = false;   // a match begins and ends at the boundary of a word
  bool acrossLines = false;  // `.` and the starred narrow sets take CR and LF
  bool operator==(const RegexOptions&) const = default;
};

class RegexProgram {
 public:
  static RegexProgram Compile(const char* pattern, const RegexOptions& options);
  // Of any bytes: what has no sense in them is skipped.
  RegexProgram(std::vector<unsigned char> code, const RegexOptions& options, bool anchored)
      : m_code(std::move(code)), m_options(options), m_anchored(anchored) {}

  const std::vector<unsigned char>& Code() const { return m_code; }
  bool WordSearch() const { return m_options.wordSearch; }
  bool AcrossLines() const { return m_options.acrossLines; }
  // Matches begin at the text's start, or at that of a line.
  bool Anchored() const { return m_anchored; }
  bool operator==(const RegexProgram&) const = default;

 private:
  std::vector<unsigned char> m_code;
  RegexOptions m_options;
  bool m_anchored;
};
