// The program's text matcher: plain text and regular expressions, byte by byte.
//
// Shape    A pattern becomes a byte program (regex_program.h). The whole application has one
//          compiled pattern; a new compile replaces it, and all views share the one compiled last.
// Owner    Borrows the texts. What RegexState points at is good as long as the last text is.
// Errors   Compiling throws (RegexRaise); RegexPrepare reduces that to 0. Matching has no failures:
//          any program on any text ends within its bounds.
// Threads  Interface thread.
#pragma once

#include <cstdint>
#include <string_view>

#include "tree/regex/regex_program.h"

// Compiles the text that a user typed; 0 when it is no pattern. The other four are truth values;
// callers pass acrossLines as 0. A pattern that failed leaves its first part in RegexState.program,
// and that is what is matched until the next one. Makes the pattern ready for RegexMatchText.
int RegexPrepare(const char* pattern, int ignoreCase, int literal, int wordSearch, int acrossLines);

// Writes the program of a pattern that ends at the delimiter; gives the position behind its last
// byte. Throws what RegexRaise throws.
// REQUIRES: kRegexSlackBytes of room behind bufferEnd, because room is asked for once per item.
unsigned char* RegexCompile(const char* pattern, unsigned char* buffer, unsigned char* bufferEnd,
                            int delimiter, int literal, int ignoreCase);

// Throws a std::string, "Regular expression parser error: %d".
[[noreturn]] void RegexRaise(int code);

// How many patterns have been prepared, whether they compiled or not: what was made from one holds
// as long as this stays.
unsigned RegexPrepared();

// 1 when the pattern last prepared occurs in the text, else 0. Allocates nothing.
int RegexMatchText(std::string_view text);

// The same in parts, for a search that must stay cancellable in any single text. A part is about
// `steps` steps of the matcher (a hundred thousand take some milliseconds at most). Unfinished: go
// on with RegexResumeText and the same text. The answer is No when a text was begun or a pattern
// prepared meanwhile.
enum class RegexAnswer { No, Yes, Unfinished };
RegexAnswer RegexBeginText(std::string_view text, std::uint64_t steps);
RegexAnswer RegexResumeText(std::string_view text, std::uint64_t steps);

// RegexSearch with the pattern last compiled. When it gives 1, the last two receive where the match
// begins and ends.
int RegexFindIn(const char* from, const char* begin, const char* end, const char** matchFrom,
                const char** matchTo);
// Tries a program at `from` and onward; 1 with matchStart and matchEnd set, or 0.
// REQUIRES: begin <= from <= end. A program elsewhere than in RegexState ends with RX_END.
int RegexSearch(const char* from, const char* begin, const char* end, const unsigned char* program);
// Tries a program at exactly `at`; 1 with matchEnd set, or 0. Same requirements.
int RegexMatchHere(const char* at, const char* begin, const char* end, const unsigned char* code,
                   int wordFlag);
