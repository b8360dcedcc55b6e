#include "base/text.h"
#include "statistics/pattern_bytes.h"
#include "statistics/text_pattern.h"
#include "where/text/where_parser.h"
#include "where/text/where_writer.h"

namespace {

// A byte or character of a word, and what says the same of a number as PatternMaker does. Nothing
// in it goes back: the first way that fits is the only one.
#define WORD "[^\\x00-/:-@\\[-^`{-\\x7f]"
#define HEX "[0-9A-Fa-f]"
#define UUID HEX "{8}-" HEX "{4}-" HEX "{4}-" HEX "{4}-" HEX "{12}(?!" WORD ")"
#define DECIMAL "[0-9]++(?:[.,][0-9]++)*+(?:[eE][+-]?[0-9]++)?+"
constexpr const char* kWord = WORD;
constexpr const char* kNoUuid = "(?!" UUID ")";
constexpr const char* kFirstNumber =
    "(?<n>(?>(?<!" WORD ")(?:[+-](?=[0-9])|(?!(?<=(?<!" WORD ")[+-])[0-9]))(?:" UUID "|0[xX]" HEX
    "++(?!" WORD ")|" DECIMAL "(?!" WORD ")|(?=[0-9]*[A-Fa-f])(?=[A-Fa-f]*[0-9])" HEX
    "{2,64}+(?!" WORD ")|" DECIMAL ")|(?<=" WORD ")[0-9]++))";
#undef DECIMAL
#undef UUID
#undef HEX
#undef WORD

std::string Quoted(char quote, bool closed) {
  const std::string q(1, quote);
  return q + "(?>(?:[^" + q + "\\\\]++|\\\\[\\s\\S])*+)" + (closed ? q : "\\\\?+\\z");
}

bool IsWord(char c) {
  return (ByteKind::Of(c) & ByteKind::kWord) != 0;
}

// A pattern becoming an expression.
class Expression {
 public:
  explicit Expression(std::string_view pattern) : m_pattern(pattern) {}

  std::string Make() {
    while (m_at < m_pattern.size()) {
      const char c = m_pattern[m_at++];
      if (c == PatternByte::kEscape)
        AppendLiteral(static_cast<char>(m_pattern[m_at++] & ~PatternByte::kEscapedBit));
      else if (c > 0 && c < PatternByte::kEscape)
        AppendMark(c);
      else
        AppendLiteral(c);
    }
    return m_isEnded ? m_text : m_text + "\\z";
  }

 private:
  void AppendMark(char mark) {
    const bool behindWord = m_behindWord;
    m_behindWord = mark == PatternByte::kNumber;
    switch (mark) {
      case PatternByte::kNumber:
        m_text += m_numbers++ == 0 ? kFirstNumber : "(?>(?&n))";
        break;
      case PatternByte::kQuoted:
      case PatternByte::kApostrophed:
        m_text += Quoted(mark == PatternByte::kQuoted ? '"' : '\'', true);
        break;
      case PatternByte::kQuotedOpen:
      case PatternByte::kApostrophedOpen:
        m_text += Quoted(mark == PatternByte::kQuotedOpen ? '"' : '\'', false);
        m_isEnded = true;
        break;
      case PatternByte::kCut:
        if (behindWord) m_text.append("(?!").append(kWord).append(")");
        m_text += "[\\s\\S]";
        m_isEnded = true;
        break;
      default:
        m_text += kWord;
        m_isEnded = true;
    }
  }

  void AppendLiteral(char c) {
    constexpr char kDigits[] = "0123456789abcdef";
    const auto byte = static_cast<unsigned char>(c);
    if (!m_behindWord && MayBeginUuid()) m_text += kNoUuid;
    m_behindWord = IsWord(c);
    if (byte < 0x20 || byte == 0x7F) {
      m_text.append("\\x").push_back(kDigits[byte >> 4]);
      m_text.push_back(kDigits[byte & 15]);
    } else {
      if (!m_behindWord && c != ' ') m_text.push_back('\\');
      m_text.push_back(c);
    }
  }
  // Eight letters and a "-": with other numbers behind them they could be left out as well.
  bool MayBeginUuid() const {
    const std::string_view word = m_pattern.substr(m_at - 1, 9);
    if (word.size() < 9 || word[8] != '-') return false;
    for (const char c : word.substr(0, 8))
      if (!(ByteKind::Of(c) & ByteKind::kHexLetter)) return false;
    return true;
  }

  const std::string_view m_pattern;
  std::size_t m_at = 0;
  std::string m_text = "^";
  std::size_t m_numbers = 0;
  bool m_behindWord = false, m_isEnded = false;
};

}  // namespace

std::string ShownPattern(std::string_view pattern) {
  constexpr const char* kShown[] = {"", "#", "\"...\"", "\"...", "'...'", "'...", "...", "..."};
  std::string text;
  for (std::size_t at = 0; at < pattern.size(); ++at) {
    const char c = pattern[at];
    if (c == PatternByte::kEscape)
      text.push_back(static_cast<char>(pattern[++at] & ~PatternByte::kEscapedBit));
    else if (c > 0 && c < PatternByte::kEscape)
      text += kShown[static_cast<std::size_t>(c)];
    else
      text.push_back(c);
  }
  return text;
}

std::optional<std::string> OnlyThisPattern(std::string_view pattern) {
  if (!IsUtf8(pattern)) return std::nullopt;
  WhereExpr test;
  test.field = WhereField::Text;
  test.op = WhereOperator::Matches;
  test.values.emplace_back();
  test.values.back().text = Expression(pattern).Make();
  std::string text = WhereText(test);
  WhereError error;
  if (!ParseWhere(text, error)) return std::nullopt;
  return text;
}
