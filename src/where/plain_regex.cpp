#include "where/plain_regex.h"

#include <cctype>

namespace {

bool IsPlain(char c) {
  return c >= 0x20 && c < 0x7F;
}

// The length of a set at the beginning; 0: none that is plain.
std::size_t PlainSet(std::string_view rest) {
  if (rest.size() < 3 || rest[1] == '^' || rest[1] == ']') return 0;
  const std::size_t end = rest.find(']');
  if (end == rest.npos) return 0;
  // Of a character that is no ASCII it would take each byte.
  for (const char c : rest.substr(1, end - 1))
    if (!IsPlain(c) || c == '[' || c == '\\') return 0;
  return end + 1;
}

}  // namespace

bool MeansTheSameByBytes(std::string_view expression) {
  for (std::size_t at = 0; at < expression.size();) {
    const char c = expression[at];
    const std::string_view rest = expression.substr(at);
    std::size_t bytes = 1;
    if (!IsPlain(c)) return false;
    if (c == '[') {
      bytes = PlainSet(rest);
    } else if (c == '.') {
      // Several that may be empty share what lies between without dividing a character.
      bytes = rest.size() > 1 && rest[1] == '*' && !(rest.size() > 2 && rest[2] == '+') ? 2 : 0;
    } else if (c == '(') {
      const bool special = rest.size() > 1 && (rest[1] == '?' || rest[1] == '*');
      bytes = !special ? 1 : rest.starts_with("(?:") ? 3 : 0;
    } else if (c == '\\') {
      const bool sign = rest.size() > 1 && std::ispunct(static_cast<unsigned char>(rest[1])) != 0;
      bytes = sign ? 2 : 0;
    }
    if (bytes == 0) return false;
    at += bytes;
  }
  return true;
}

bool SeesNoEnd(std::string_view expression) {
  if (!MeansTheSameByBytes(expression) || expression.find('$') != expression.npos) return false;
  // A repetition that gives nothing back may take what a longer text adds.
  for (const char* const greedy : {"*+", "++", "?+", "}+"})
    if (expression.find(greedy) != expression.npos) return false;
  return true;
}

std::string BeginningOf(std::string_view expression) {
  constexpr std::string_view kSigns = " _:/=,-@#%&;<>~!'\"";
  const bool hasWays = expression.find('|') != expression.npos;
  if (!expression.starts_with('^') || hasWays || !MeansTheSameByBytes(expression)) return {};
  std::string beginning;
  for (const char c : expression.substr(1)) {
    if (std::isalnum(static_cast<unsigned char>(c)) || kSigns.find(c) != kSigns.npos) {
      beginning.push_back(c);
      continue;
    }
    // The one before these may be missing.
    const bool mayLack = c == '?' || c == '*' || c == '{';
    if (mayLack && !beginning.empty()) beginning.pop_back();
    break;
  }
  return beginning;
}
