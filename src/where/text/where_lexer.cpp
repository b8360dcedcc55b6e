#include "where/text/where_lexer.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"

namespace {

using TokenKind = WhereToken::Kind;

// Longer ones first. Some are in other languages only, so that a message can name ours.
constexpr std::string_view kSigns[] = {"==", "!=", "<=", ">=", "&&", "||", "=~", "<>", "(", ")",
                                       "{",  "}",  ",",  "<",  ">",  "!",  "~",  "=",  "&", "|"};

std::size_t SignBytes(std::string_view rest) {
  for (const std::string_view sign : kSigns)
    if (rest.substr(0, sign.size()) == sign) return sign.size();
  return 0;
}

// The bytes of a quoted text, and whether it has its second quote.
std::size_t QuotedBytes(std::string_view rest, bool& whole) {
  for (std::size_t at = 1; at < rest.size(); ++at) {
    if (rest[at] == '\\') {
      ++at;
    } else if (rest[at] == '"') {
      whole = true;
      return at + 1;
    }
  }
  whole = false;
  return rest.size();
}

int HexDigit(char c) {
  if (c >= '0' && c <= '9') return c - '0';
  if (c >= 'a' && c <= 'f') return c - 'a' + 10;
  if (c >= 'A' && c <= 'F') return c - 'A' + 10;
  return -1;
}

bool FailAt(WhereQuotedFault& fault, std::size_t place, std::size_t length, std::string reason) {
  fault = {place, length, std::move(reason)};
  return false;
}

// Reads the escape at `at` and stands behind it afterwards.
bool ReadEscape(std::string_view quoted, std::size_t& at, std::string& text,
                WhereQuotedFault& fault) {
  constexpr std::string_view kLetters = "\"\\ntr", kBytes = "\"\\\n\t\r";
  const char letter = quoted[at + 1];
  if (const std::size_t known = kLetters.find(letter); known != kLetters.npos) {
    text.push_back(kBytes[known]);
    at += 2;
    return true;
  }
  if (letter == 'x' || letter == 'X') {
    const int high = at + 2 < quoted.size() ? HexDigit(quoted[at + 2]) : -1;
    const int low = at + 3 < quoted.size() ? HexDigit(quoted[at + 3]) : -1;
    if (high < 0 || low < 0)
      return FailAt(fault, at, 2, "two hexadecimal digits belong behind \\x");
    text.push_back(static_cast<char>(high * 16 + low));
    at += 4;
    return true;
  }
  return FailAt(fault, at, 1, "a backslash in a text is written \\\\");
}

std::string HexEscape(char c) {
  constexpr char kDigits[] = "0123456789abcdef";
  const auto byte = static_cast<unsigned char>(c);
  return std::string("\\x") + kDigits[byte >> 4] + kDigits[byte & 15];
}

// What could not be seen in a line of text is told, not taken.
bool TakeCharacter(std::string_view quoted, std::size_t& at, std::string& text,
                   WhereQuotedFault& fault) {
  const std::size_t bytes = CharacterBytes(quoted, at);
  const auto first = static_cast<unsigned char>(quoted[at]);
  if (bytes == 0 || first < 0x20 || first == 0x7F)
    return FailAt(fault, at, 1, "this byte is written " + HexEscape(quoted[at]));
  text.append(quoted.substr(at, bytes));
  at += bytes;
  return true;
}

}  // namespace

bool WhereToken::IsWord(std::string_view word) const {
  return kind == TokenKind::Word && CompareIgnoringCase(text, word) == 0;
}

bool IsWhereWordByte(char c) {
  return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z') || (c >= '0' && c <= '9') || c == '_' ||
         c == '.' || c == '/' || c == ':' || c == '-' || c == '+';
}

bool IsWhereBlank(char c) {
  return c == ' ' || c == '\t' || c == '\n' || c == '\r';
}

WhereToken WhereTokenAt(std::string_view text, std::size_t place) {
  while (place < text.size() && IsWhereBlank(text[place])) ++place;
  WhereToken token;
  token.place = std::min(place, text.size());
  const std::string_view rest = text.substr(token.place);
  if (rest.empty()) return token;
  std::size_t bytes = 0;
  if (rest.front() == '"') {
    bool whole = false;
    bytes = QuotedBytes(rest, whole);
    token.kind = whole ? TokenKind::Quoted : TokenKind::Unterminated;
  } else if (IsWhereWordByte(rest.front())) {
    while (bytes < rest.size() && IsWhereWordByte(rest[bytes])) ++bytes;
    token.kind = TokenKind::Word;
  } else if (bytes = SignBytes(rest); bytes > 0) {
    token.kind = TokenKind::Sign;
  } else {
    bytes = std::max<std::size_t>(1, CharacterBytes(rest, 0));
    token.kind = TokenKind::Strange;
  }
  token.text = rest.substr(0, bytes);
  return token;
}

std::optional<std::string> Unquoted(std::string_view quoted, bool pattern,
                                    WhereQuotedFault& fault) {
  std::string text;
  const std::size_t end = quoted.size() - 1;
  for (std::size_t at = 1; at < end;) {
    if (quoted[at] != '\\') {
      if (!TakeCharacter(quoted, at, text, fault)) return std::nullopt;
    } else if (pattern) {
      text.push_back(quoted[at++]);
      if (!TakeCharacter(quoted, at, text, fault)) return std::nullopt;
    } else if (!ReadEscape(quoted.substr(0, end), at, text, fault)) {
      return std::nullopt;
    }
  }
  return text;
}

std::size_t CharacterBytes(std::string_view text, std::size_t place) {
  for (std::size_t bytes = 1; bytes <= 4 && bytes <= text.size() - place; ++bytes)
    if (IsUtf8(text.substr(place, bytes))) return bytes;
  return 0;
}

bool IsHiddenCharacter(std::string_view text, std::size_t place, std::size_t bytes) {
  if (bytes == 0) return true;
  const auto byte = [&](std::size_t i) { return static_cast<unsigned char>(text[place + i]); };
  if (bytes == 1) return byte(0) < 0x20 || byte(0) == 0x7F;
  if (bytes == 2) return byte(0) == 0xC2 && byte(1) < 0xA0;  // C1
  if (bytes != 3) return false;
  const unsigned code = (byte(0) & 0x0FU) << 12 | (byte(1) & 0x3FU) << 6 | (byte(2) & 0x3FU);
  return (code >= 0x200B && code <= 0x200F) || (code >= 0x2028 && code <= 0x202E) ||
         (code >= 0x2060 && code <= 0x206F) || code == 0xFEFF;
}
