// The header lines of an HTTP/1.1 message, or the trailer lines of a chunked one.
//
// Shape    Names compare without case. A value has no blanks around it. Views into the text that
//          was parsed.
// Owner    Borrows the text.
// Errors   False and words for the peer. Nothing that two programs could read in two ways is
//          accepted: no bare line feed, no line that continues the one before, no blank before the
//          colon, no control byte.
// Threads  One.
#pragma once

#include <cstddef>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

bool IsSameWord(std::string_view one, std::string_view other);  // without case
bool IsHttpToken(std::string_view text);
// Without blanks and tabs around it.
std::string_view TrimmedBlanks(std::string_view text);

class HttpHeaders {
 public:
  // `lines`: each ended by CRLF.
  bool Parse(std::string_view lines, std::size_t linesMax, std::string* why);
  std::size_t Count(std::string_view name) const;
  // The first of this name, "" when there is none.
  std::string_view Value(std::string_view name) const;
  bool Has(std::string_view name) const { return Count(name) > 0; }
  // Is this word in the comma-separated lists of all lines of the name?
  bool HasWord(std::string_view name, std::string_view word) const;

 private:
  struct Line {
    std::string_view name, value;
  };
  bool ParseLine(std::string_view line, std::string* why);
  std::vector<Line> m_lines;
};
// A number in decimal digits only; none for anything else, also a larger one than fits.
std::optional<std::size_t> PlainNumber(std::string_view digits);
