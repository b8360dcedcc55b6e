// Text as bytes: UTF-8 everywhere inside.
//
// The local multibyte form is UTF-8 on every platform we ship, so the two conversions are the
// identity; bytes that are not UTF-8 pass through files and exports unchanged, and only the screen
// replaces them.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

inline std::string _UTF2MBS(std::string text) {
  return text;
}
inline std::string _MBS2UTF(std::string text) {
  return text;
}

// Is every byte part of a well-formed UTF-8 sequence?
bool IsUtf8(std::string_view text);

// The text with U+FFFD for every malformed sequence.
std::string ReplaceMalformed(std::string_view text);

// The longest prefix of at most `bytes` bytes that does not cut a UTF-8 sequence.
std::string_view CutUtf8(std::string_view text, std::size_t bytes);

// Letters A to Z as a to z, other bytes as they are.
std::string ToLowerAscii(std::string_view text);

// Compares the two in small letters: < 0, 0, > 0.
int CompareIgnoringCase(std::string_view a, std::string_view b);

// "28,200,000": a number for the user, in groups of three digits.
std::string GroupDigits(std::uint64_t number);
