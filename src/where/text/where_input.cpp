#include "where/text/where_input.h"

#include "base/text.h"

namespace {

using What = WhereNext::What;

std::string ValueExpected(WhereKind kind) {
  switch (kind) {
    case WhereKind::Severity:
      return "info, warn or error";
    case WhereKind::Number:
      return "a number";
    case WhereKind::Id:
      return "a number or a name";
    case WhereKind::Moment:
      return "a time";
    case WhereKind::Duration:
      return "a time span";
    case WhereKind::Name:
      return "a name";
    case WhereKind::Text:
    case WhereKind::Flag:
      break;
  }
  return "a text";
}

void AddOperators(WhereField field, std::vector<std::string>& words) {
  for (const WhereOperator op : OperatorsOf(field))
    if (op != WhereOperator::IsSet) words.emplace_back(WordOf(op));
}

// Quotes of other forms, which word processors and other languages have.
bool IsOtherQuote(std::string_view text) {
  return text == "'" || text == "`" || text == "\xE2\x80\x9C" || text == "\xE2\x80\x9D" ||
         text == "\xE2\x80\x9E" || text == "\xC2\xAB" || text == "\xC2\xBB";
}

// What is wrong with a token wherever it stands; else the reason of its place.
std::string TokenReason(const WhereToken& token, std::string reason) {
  if (token.kind == WhereToken::Kind::Unterminated)
    return "the second quote of this text is missing";
  if (token.kind != WhereToken::Kind::Strange) return reason;
  if (IsOtherQuote(token.text)) return "texts stand in straight double quotes: \"two words\"";
  const auto byte = static_cast<unsigned char>(token.text.front());
  if (!IsUtf8(token.text) || byte < 0x20 || byte == 0x7F)
    return "a byte that is no text; in quotes it is written \\xNN";
  return "a name or text with " + InQuotes(token.text) + " stands in quotes";
}

}  // namespace

WhereToken WhereInput::Take() {
  WhereToken taken = m_token;
  m_takenEnd = taken.EndPlace();
  m_token = WhereTokenAt(m_text, m_takenEnd);
  return taken;
}

bool WhereInput::FailAt(const WhereToken& token, std::string reason, const WhereNext& next) {
  const bool atEnd = token.kind == WhereToken::Kind::End;
  // An error at the end is shown where the last word ends.
  FailAt(atEnd ? m_takenEnd : token.place, token.text.size(),
         TokenReason(token, std::move(reason)));
  m_error.expected = ExpectedWords(next);
  if (atEnd) m_next = next;
  return false;
}

bool WhereInput::FailAt(std::size_t place, std::size_t length, std::string reason) {
  m_error = {place, length, std::move(reason), {}};
  return false;
}

std::vector<std::string> ExpectedWords(const WhereNext& next) {
  std::vector<std::string> words;
  switch (next.what) {
    case What::Nothing:
      break;
    case What::Test:
      words = {"a field", "not", "("};
      break;
    case What::AfterTest:
      words = {"and", "or"};
      if (next.closes) words.emplace_back(")");
      if (next.isCompared) AddOperators(next.field, words);
      break;
    case What::Operator:
      AddOperators(next.field, words);
      break;
    case What::AfterNot:
      for (const WhereOperator op : OperatorsOf(next.field))
        if (op >= WhereOperator::In && op != WhereOperator::IsSet) words.emplace_back(WordOf(op));
      break;
    case What::List:
      words = {"{"};
      break;
    case What::Value:
      words = {ValueExpected(KindOf(next.field))};
      break;
    case What::AfterValue:
      words = {",", "}"};
      break;
  }
  return words;
}

std::string InQuotes(std::string_view word) {
  constexpr std::size_t kShownMax = 60;
  std::string shown = "\"";
  shown.append(CutUtf8(word, kShownMax));
  return shown.append(word.size() > kShownMax ? "...\"" : "\"");
}
