// Words of the environment and of the command line: their letters, and how a message quotes them.
//
// Threads  Pure. IsSameWord and WithoutBlanks allocate nothing.
#pragma once

#include <cstddef>
#include <string>
#include <string_view>

constexpr char SmallLetter(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
}

// The same but for capitals.
constexpr bool IsSameWord(std::string_view a, std::string_view b) {
  if (a.size() != b.size()) return false;
  for (std::size_t i = 0; i < a.size(); ++i)
    if (SmallLetter(a[i]) != SmallLetter(b[i])) return false;
  return true;
}

constexpr std::string_view WithoutBlanks(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || (c >= '\t' && c <= '\r'); };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

// A long word is cut.
inline std::string InQuotes(std::string_view word) {
  constexpr std::size_t kShownMax = 80;
  if (word.size() <= kShownMax) return "\"" + std::string(word) + "\"";
  std::size_t cut = kShownMax;
  while (cut > 0 && (static_cast<unsigned char>(word[cut]) & 0xC0) == 0x80) --cut;
  return "\"" + std::string(word.substr(0, cut)) + "...\"";
}
