#include "complete/shell_line.h"

#include <algorithm>

namespace {

constexpr std::string_view kBlanks = " \t\n";
constexpr std::string_view kEnds = "|&;()<>";  // another command begins

class LineReader {
 public:
  explicit LineReader(std::string_view breaks) : m_breaks(breaks) {}

  void Take(char byte) {
    if (m_escaped) return TakeEscaped(byte);
    if (byte == '\\' && m_quote != '\'') {
      m_escaped = m_begun = true;
    } else if (m_quote != 0) {
      byte == m_quote ? CloseQuote() : Add(byte);
    } else if (byte == '"' || byte == '\'') {
      OpenQuote(byte);
    } else if (kBlanks.find(byte) != kBlanks.npos) {
      EndWord();
    } else if (kEnds.find(byte) != kEnds.npos) {
      EndWord();
      m_line.words.clear();
    } else {
      Add(byte);
      if (m_breaks.find(byte) != m_breaks.npos) m_line.kept = m_word.size();
    }
  }
  std::optional<ShellLine> Finish() {
    if (m_hadQuotes || m_escaped) return std::nullopt;
    m_line.quote = m_quote;
    m_line.words.push_back(m_word);
    return std::move(m_line);
  }

 private:
  void Add(char byte) {
    m_begun = true;
    m_word.push_back(byte);
  }
  // Between double quotes a backslash stands for itself before most bytes.
  void TakeEscaped(char byte) {
    m_escaped = false;
    if (m_quote == '"' && std::string_view("$`\"\\\n").find(byte) == std::string_view::npos)
      m_word.push_back('\\');
    if (byte != '\n') m_word.push_back(byte);
  }
  void OpenQuote(char quote) {
    m_quote = quote;
    m_begun = true;
    m_line.kept = m_word.size();
  }
  void CloseQuote() {
    m_quote = 0;
    m_hadQuotes = true;
  }
  void EndWord() {
    if (m_begun) m_line.words.push_back(m_word);
    m_word.clear();
    m_begun = m_hadQuotes = false;
    m_line.kept = 0;
  }

  const std::string_view m_breaks;
  ShellLine m_line;
  std::string m_word;
  char m_quote = 0;
  bool m_escaped = false, m_begun = false, m_hadQuotes = false;
};

bool IsPlain(char byte) {
  const auto code = static_cast<unsigned char>(byte);
  return code >= 0x80 || (byte >= '0' && byte <= '9') || (byte >= 'A' && byte <= 'Z') ||
         (byte >= 'a' && byte <= 'z') ||
         std::string_view("/._-+,%").find(byte) != std::string::npos;
}

// "!" is expanded between double quotes too, where a backslash before it would stay.
std::string QuotedByte(char byte, char quote) {
  const std::string one(1, byte);
  if (quote == '\'') return byte == '\'' ? "'\\''" : one;
  if (quote == '"' && byte == '!') return "\"\\!\"";
  const bool bare =
      quote == '"' ? std::string_view("$`\"\\").find(byte) == std::string::npos : IsPlain(byte);
  return bare ? one : "\\" + one;
}

std::string Quoted(std::string_view text, char quote) {
  std::string quoted;
  for (const char byte : text) quoted += QuotedByte(byte, quote);
  return quoted;
}

std::size_t Common(std::string_view a, std::string_view b) {
  std::size_t same = 0;
  while (same < a.size() && same < b.size() && a[same] == b[same]) ++same;
  return same;
}

}  // namespace

std::optional<ShellLine> ReadShellLine(std::string_view line, std::string_view breaks) {
  LineReader reader(breaks);
  for (const char byte : line) reader.Take(byte);
  std::optional<ShellLine> read = reader.Finish();
  if (!read || read->words.size() < 2) return std::nullopt;
  read->words.erase(read->words.begin());  // the program
  return read;
}

std::vector<std::string> QuotedForBash(const std::vector<std::string>& words,
                                       const ShellLine& line) {
  std::vector<std::string> quoted;
  if (words.empty()) return quoted;
  std::size_t common = words.front().size(), quotedCommon = std::string::npos;
  for (const std::string& word : words) {
    common = std::min(common, Common(words.front(), word));
    quoted.push_back(Quoted(std::string_view(word).substr(line.kept), line.quote));
    quotedCommon = std::min(quotedCommon, Common(quoted.front(), quoted.back()));
  }
  const std::string typed =
      Quoted(std::string_view(words.front()).substr(line.kept, common - line.kept), line.quote);
  if (quoted.size() > 1 && quotedCommon > typed.size()) quoted.push_back(typed);
  return quoted;
}
