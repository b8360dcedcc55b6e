#include "quor/http/headers.h"

#include <algorithm>
#include <charconv>

#include "base/fail_with.h"

namespace {

char Lower(char c) {
  return c >= 'A' && c <= 'Z' ? static_cast<char>(c + ('a' - 'A')) : c;
}

bool IsTokenByte(char c) {
  if ((c >= '0' && c <= '9') || (Lower(c) >= 'a' && Lower(c) <= 'z')) return true;
  return c != '\0' && std::string_view("!#$%&'*+-.^_`|~").find(c) != std::string_view::npos;
}

bool IsControl(char c) {
  const auto byte = static_cast<unsigned char>(c);
  return (byte < 0x20 && c != '\t') || byte == 0x7F;
}

}  // namespace

bool IsSameWord(std::string_view one, std::string_view other) {
  return std::equal(one.begin(), one.end(), other.begin(), other.end(),
                    [](char a, char b) { return Lower(a) == Lower(b); });
}

bool IsHttpToken(std::string_view text) {
  return !text.empty() && std::all_of(text.begin(), text.end(), IsTokenByte);
}

std::string_view TrimmedBlanks(std::string_view text) {
  const auto isBlank = [](char c) { return c == ' ' || c == '\t'; };
  while (!text.empty() && isBlank(text.front())) text.remove_prefix(1);
  while (!text.empty() && isBlank(text.back())) text.remove_suffix(1);
  return text;
}

std::optional<std::size_t> PlainNumber(std::string_view digits) {
  const auto isDigit = [](char c) { return c >= '0' && c <= '9'; };
  if (digits.empty() || !std::all_of(digits.begin(), digits.end(), isDigit)) return std::nullopt;
  std::size_t number = 0;
  const char* const end = digits.data() + digits.size();
  if (std::from_chars(digits.data(), end, number).ec != std::errc()) return std::nullopt;
  return number;
}

bool HttpHeaders::Parse(std::string_view lines, std::size_t linesMax, std::string* why) {
  m_lines.clear();
  while (!lines.empty()) {
    const std::size_t end = lines.find('\n');
    if (end == lines.npos || end == 0 || lines[end - 1] != '\r')
      return FailWith(why, "a header line does not end with CR LF");
    if (m_lines.size() == linesMax) return FailWith(why, "too many header lines");
    if (!ParseLine(lines.substr(0, end - 1), why)) return false;
    lines.remove_prefix(end + 1);
  }
  return true;
}

bool HttpHeaders::ParseLine(std::string_view line, std::string* why) {
  if (!line.empty() && (line.front() == ' ' || line.front() == '\t'))
    return FailWith(why, "a header line continues the one before");
  const std::size_t colon = line.find(':');
  if (colon == line.npos || !IsHttpToken(line.substr(0, colon)))
    return FailWith(why, "a header line has no name before a colon");
  const std::string_view value = TrimmedBlanks(line.substr(colon + 1));
  if (std::any_of(value.begin(), value.end(), IsControl))
    return FailWith(why, "a header line has a control byte");
  m_lines.push_back({line.substr(0, colon), value});
  return true;
}

std::size_t HttpHeaders::Count(std::string_view name) const {
  return static_cast<std::size_t>(
      std::count_if(m_lines.begin(), m_lines.end(),
                    [&](const Line& line) { return IsSameWord(line.name, name); }));
}

std::string_view HttpHeaders::Value(std::string_view name) const {
  for (const Line& line : m_lines)
    if (IsSameWord(line.name, name)) return line.value;
  return "";
}

bool HttpHeaders::HasWord(std::string_view name, std::string_view word) const {
  for (const Line& line : m_lines) {
    if (!IsSameWord(line.name, name)) continue;
    std::string_view rest = line.value;
    for (bool more = true; more;) {
      const std::size_t comma = rest.find(',');
      if (IsSameWord(TrimmedBlanks(rest.substr(0, comma)), word)) return true;
      more = comma != rest.npos;
      if (more) rest.remove_prefix(comma + 1);
    }
  }
  return false;
}
