// JSON values out of an input as texts of a trace.
//
// Shape    A text that grows beyond kValueBytesMax is cut there, which is more than a trace holds.
// Owner    Borrows everything.
// Errors   False: the input is damaged within the value, and the text holds what came before.
// Threads  One.
#pragma once

#include <string>

#include "import/json/json_pull.h"

constexpr std::size_t kValueBytesMax = std::size_t{1} << 20;

inline void Bound(std::string& text) {
  if (text.size() > kValueBytesMax) text.resize(kValueBytesMax);
}
// The value that begins with `part`, without spaces between its tokens.
bool AppendValue(JsonPull& pull, JsonPart part, std::string& to);
// The same, but a text that is one word stands without quotes.
bool AppendWord(JsonPull& pull, JsonPart part, std::string& to);
