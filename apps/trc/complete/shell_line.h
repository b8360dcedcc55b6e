// The part of a shell's line that is completed, as bash hands it over.
//
// Shape    Quotes and backslashes are taken off the words, and nothing is expanded: what is behind
//          a "$" stays as it is typed. bash replaces only what stands behind the last of its word
//          breaks, so the bytes of the word before that are not to come again.
// Errors   None for a word that cannot be completed: one with a quoted part before the cursor's.
// Threads  Pure.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

struct ShellLine {
  std::vector<std::string> words;  // behind the name of the program; the last one is completed
  std::size_t kept = 0;            // so many bytes of it stay in the line
  char quote = 0;                  // the one that is open at the cursor
};
// `line` ends at the cursor.
std::optional<ShellLine> ReadShellLine(std::string_view line, std::string_view breaks);

// What bash is to put into the line for these words, which all begin with the word that is
// completed. Nothing in it is expanded when the line is run. bash inserts what the answers have in
// common, and that may not end within a quoted byte: then the word that is typed is one of them.
std::vector<std::string> QuotedForBash(const std::vector<std::string>& words,
                                       const ShellLine& line);
