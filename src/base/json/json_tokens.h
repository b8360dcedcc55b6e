// The tokens of JSON in a text.
//
// Threads  Pure.
#pragma once

#include <cstddef>
#include <string_view>

enum class JsonToken {
  Open,   // { or [
  Close,  // } or ]
  Comma,
  Colon,
  String,
  Other,  // a number, true, false or null
  None,   // no token begins here, or the text ends
};

// The end of the token that begins at `at`, whose kind is left in `token`; `at` for None.
std::size_t EndOfToken(std::string_view text, std::size_t at, JsonToken& token);
std::size_t SkipJsonSpace(std::string_view text, std::size_t at);
