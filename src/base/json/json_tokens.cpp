#include "base/json/json_tokens.h"

#include <algorithm>

namespace {

bool IsOneOf(std::string_view some, char c) {
  return some.find(c) != std::string_view::npos;
}

bool IsDigit(char c) {
  return c >= '0' && c <= '9';
}

bool IsHexDigit(char c) {
  return IsDigit(c) || (c >= 'a' && c <= 'f') || (c >= 'A' && c <= 'F');
}

std::size_t EndOfDigits(std::string_view text, std::size_t at) {
  while (at < text.size() && IsDigit(text[at])) ++at;
  return at;
}

// 0: it is no escape. `at` is behind the backslash.
std::size_t EndOfEscape(std::string_view text, std::size_t at) {
  if (at >= text.size()) return 0;
  if (text[at] != 'u') return IsOneOf("\"\\/bfnrt", text[at]) ? at + 1 : 0;
  const std::string_view digits = text.substr(at + 1, 4);
  return digits.size() == 4 && std::ranges::all_of(digits, IsHexDigit) ? at + 5 : 0;
}

// 0: it does not end, or has a byte that a string has not.
std::size_t EndOfString(std::string_view text, std::size_t at) {
  for (++at; at < text.size();) {
    const char c = text[at++];
    if (c == '"') return at;
    if (static_cast<unsigned char>(c) < 0x20) return 0;
    if (c != '\\') continue;
    at = EndOfEscape(text, at);
    if (at == 0) return 0;
  }
  return 0;
}

// 0: it is no number. Without bounds for its size.
std::size_t EndOfNumber(std::string_view text, std::size_t at) {
  if (text[at] == '-') ++at;
  const std::size_t whole = at;
  at = EndOfDigits(text, at);
  if (at == whole || (text[whole] == '0' && at > whole + 1)) return 0;
  if (at < text.size() && text[at] == '.') {
    const std::size_t part = at + 1;
    at = EndOfDigits(text, part);
    if (at == part) return 0;
  }
  if (at < text.size() && (text[at] == 'e' || text[at] == 'E')) {
    std::size_t power = at + 1;
    if (power < text.size() && (text[power] == '+' || text[power] == '-')) ++power;
    at = EndOfDigits(text, power);
    if (at == power) return 0;
  }
  return at;
}

std::size_t EndOfOther(std::string_view text, std::size_t at) {
  if (text[at] == '-' || IsDigit(text[at])) return EndOfNumber(text, at);
  for (const std::string_view word : {"true", "false", "null"})
    if (text.substr(at).starts_with(word)) return at + word.size();
  return 0;
}

}  // namespace

std::size_t SkipJsonSpace(std::string_view text, std::size_t at) {
  while (at < text.size() && IsOneOf(" \t\r\n", text[at])) ++at;
  return at;
}

std::size_t EndOfToken(std::string_view text, std::size_t at, JsonToken& token) {
  token = JsonToken::None;
  if (at >= text.size()) return at;
  switch (text[at]) {
    case '{':
    case '[':
      token = JsonToken::Open;
      return at + 1;
    case '}':
    case ']':
      token = JsonToken::Close;
      return at + 1;
    case ',':
      token = JsonToken::Comma;
      return at + 1;
    case ':':
      token = JsonToken::Colon;
      return at + 1;
    default:
      break;
  }
  const bool string = text[at] == '"';
  const std::size_t end = string ? EndOfString(text, at) : EndOfOther(text, at);
  if (end == 0) return at;
  token = string ? JsonToken::String : JsonToken::Other;
  return end;
}
