#include "import/lines/mended_json.h"

#include <algorithm>
#include <charconv>

#include "base/text.h"

namespace {

constexpr std::size_t kEscapeBytes = 6;  // "\u00e9"

bool IsOfWord(char c) {
  return (c >= '0' && c <= '9') || (c >= 'A' && c <= 'Z') || (c >= 'a' && c <= 'z') || c == '.' ||
         c == '+' || c == '-';
}

// Python writes the first three, and any writer a number that no double holds.
bool NeedsQuotes(std::string_view word) {
  if (word == "NaN" || word == "Infinity" || word == "-Infinity") return true;
  double number = 0;
  const char* const end = word.data() + word.size();
  const auto read = std::from_chars(word.data(), end, number);
  return read.ec == std::errc::result_out_of_range && read.ptr == end;
}

class Mender {
 public:
  explicit Mender(std::string_view rest) : m_rest(rest) {}

  std::string Run() {
    while (!m_rest.empty()) {
      if (m_rest.front() == '"')
        TakeString();
      else
        TakeOutside();
    }
    return std::move(m_mended);
  }

 private:
  void Take(std::size_t bytes) {
    bytes = std::min(bytes, m_rest.size());
    m_mended += m_rest.substr(0, bytes);
    m_rest.remove_prefix(bytes);
  }

  void TakeOutside() {
    const auto end = std::find_if_not(m_rest.begin(), m_rest.end(), IsOfWord);
    const auto bytes = static_cast<std::size_t>(end - m_rest.begin());
    if (bytes == 0) return Take(1);
    const bool quoted = NeedsQuotes(m_rest.substr(0, bytes));
    if (quoted) m_mended.push_back('"');
    Take(bytes);
    if (quoted) m_mended.push_back('"');
  }

  void TakeString() {
    Take(1);
    while (!m_rest.empty() && m_rest.front() != '"') {
      const auto byte = static_cast<unsigned char>(m_rest.front());
      if (byte == '\\')
        TakeEscape();
      else if (byte < ' ')
        TakeControl(byte);
      else
        Take(1);
    }
    Take(1);
  }

  void TakeControl(unsigned char byte) {
    constexpr char kDigits[] = "0123456789abcdef";
    m_mended += "\\u00";
    m_mended.push_back(kDigits[byte / 16]);
    m_mended.push_back(kDigits[byte % 16]);
    m_rest.remove_prefix(1);
  }

  void TakeEscape() {
    const unsigned unit = UnitAt(0);
    if (unit < 0xD800 || unit > 0xDFFF) return Take(2);
    const unsigned next = UnitAt(kEscapeBytes);
    if (unit < 0xDC00 && next >= 0xDC00 && next <= 0xDFFF) return Take(2 * kEscapeBytes);
    m_mended += "\\ufffd";
    m_rest.remove_prefix(kEscapeBytes);
  }

  // The number of the escape "\u...." there; 0: there is none.
  unsigned UnitAt(std::size_t at) const {
    if (m_rest.size() < at + kEscapeBytes || m_rest.substr(at, 2) != "\\u") return 0;
    unsigned unit = 0;
    const char* const digits = m_rest.data() + at + 2;
    const char* const end = m_rest.data() + at + kEscapeBytes;
    return std::from_chars(digits, end, unit, 16).ptr == end ? unit : 0;
  }

  std::string_view m_rest;
  std::string m_mended;
};

}  // namespace

std::string MendJson(std::string_view line) {
  const std::string wellFormed = ReplaceMalformed(line);
  return Mender(wellFormed).Run();
}
