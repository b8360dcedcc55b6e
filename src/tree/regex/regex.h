// The program's text matcher: plain text and regular expressions, byte by byte.
//
// Shape    The whole application has one compiled pattern. A new compilation replaces it, and all
//          views use the last one. These operations work on it, and RegexState (regex_state.h)
//          shows it. For several patterns at once there are values: a RegexProgram, a RegexPlan of
//          it, and a RegexMatcher that runs plans.
// Owner    Borrows the texts. Pointers in RegexState are valid as long as the last text is.
// Errors   Compiling throws (RegexRaise); RegexPrepare returns 0 instead. Matching cannot fail: any
//          program on any text ends within its bounds.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <string_view>

#include "tree/regex/plan/regex_matcher.h"
#include "tree/regex/program/regex_compiler.h"
#include "tree/regex/regex_state.h"

// Compiles the text that a user typed; 0 if it is not a valid pattern. The other four are truth
// values; callers pass acrossLines as 0. After a failure RegexState.program has the first part of
// the pattern, and that part is matched until the next call. Makes the pattern ready for
// RegexMatchText.
int RegexPrepare(const char* pattern, int ignoreCase, int literal, int wordSearch, int acrossLines);

// CompileRegex with the wordSearch of RegexState, which receives the counts.
unsigned char* RegexCompile(const char* pattern, unsigned char* buffer, unsigned char* bufferEnd,
                            int delimiter, int literal, int ignoreCase);

// The pattern prepared last, whether it compiled or not; null before the first.
const RegexProgram* RegexLastProgram();

// 1 when the pattern last prepared occurs in the text, else 0. Allocates nothing.
int RegexMatchText(std::string_view text);

// The same in parts, for a search that must be cancellable within any single text. A part is about
// `steps` steps of the matcher (a hundred thousand take some milliseconds at most). Unfinished:
// call RegexResumeText with the same text. It answers No if another text was begun or another
// pattern prepared meanwhile.
RegexAnswer RegexBeginText(std::string_view text, std::uint64_t steps);
RegexAnswer RegexResumeText(std::string_view text, std::uint64_t steps);

// RegexSearch with the pattern compiled last. If it returns 1, the last two receive the beginning
// and the end of the match.
int RegexFindIn(const char* from, const char* begin, const char* end, const char** matchFrom,
                const char** matchTo);
// Tries a program at `from` and every later position; 1 with matchStart and matchEnd set, or 0.
// REQUIRES: begin <= from <= end. A program outside RegexState ends with RX_END.
int RegexSearch(const char* from, const char* begin, const char* end, const unsigned char* program);
// Tries a program at exactly `at`; 1 with matchEnd set, or 0. Same requirements.
int RegexMatchHere(const char* at, const char* begin, const char* end, const unsigned char* code,
                   int wordFlag);
