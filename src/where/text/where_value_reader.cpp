#include "where/text/where_value_reader.h"

#include "base/near/near_word.h"
#include "base/text.h"
#include "where/text/where_values.h"

namespace {

using TokenKind = WhereToken::Kind;

class ValueReader {
 public:
  ValueReader(WhereInput& input, WhereField field, WhereOperator op)
      : m_input(input), m_field(field), m_op(op) {}

  bool ReadList(std::vector<WhereValue>& values);
  bool Read(WhereValue& value);

 private:
  WhereNext Expected(WhereNext::What what) const { return {what, m_field, m_op, false, false}; }
  bool IsOfParts() const {
    return m_op == WhereOperator::Contains || m_op == WhereOperator::StartsWith ||
           m_op == WhereOperator::Matches;
  }
  bool ReadToken(WhereValue& value);
  bool ReadSeverity(WhereValue& value);
  bool ReadNumber(WhereValue& value);
  bool ReadId(WhereValue& value);
  bool ReadMoment(WhereValue& value);
  bool ReadEnd(WhereValue& value);
  bool ReadOffset(WhereToken sign, WhereValue& value);
  bool ReadDuration(WhereValue& value);
  bool TakeRange(const WhereRange& range, WhereValue& value);
  bool FailMissing();

  WhereInput& m_input;
  WhereField m_field;
  WhereOperator m_op;
  WhereToken m_token;  // of the value, taken
};

bool ValueReader::ReadList(std::vector<WhereValue>& values) {
  if (!m_input.Token().IsSign("{")) {
    return m_input.Fail("the values behind \"in\" stand in braces: in {1, 2}",
                        Expected(WhereNext::What::List));
  }
  m_input.Take();
  for (;;) {
    if (!Read(values.emplace_back())) return false;
    if (m_input.Token().IsSign("}")) break;
    if (!m_input.Token().IsSign(","))
      return m_input.Fail("\",\" or \"}\" is missing", Expected(WhereNext::What::AfterValue));
    m_input.Take();
  }
  m_input.Take();
  return true;
}

bool ValueReader::Read(WhereValue& value) {
  const WhereToken& token = m_input.Token();
  if (token.kind != TokenKind::Word && token.kind != TokenKind::Quoted) return FailMissing();
  if (token.kind == TokenKind::Word && IsWhereKeyword(token.text)) return FailMissing();
  m_token = m_input.Take();
  value.place = m_token.place;
  if (!ReadToken(value)) return false;
  value.length = m_input.TakenEnd() - value.place;
  return true;
}

bool ValueReader::FailMissing() {
  const WhereToken& token = m_input.Token();
  std::string reason = "a value is missing";
  if (token.kind == TokenKind::Word)
    reason.append("; ").append(InQuotes(token.text)).append(" as a value stands in quotes");
  return m_input.Fail(std::move(reason), Expected(WhereNext::What::Value));
}

bool ValueReader::ReadToken(WhereValue& value) {
  value.text = m_token.text;
  if (m_token.kind == TokenKind::Quoted) {
    WhereQuotedFault fault;
    const auto text = Unquoted(m_token.text, m_op == WhereOperator::Matches, fault);
    if (!text) return m_input.FailAt(m_token.place + fault.place, fault.length, fault.reason);
    value.text = *text;
  }
  if (IsOfParts()) return true;
  switch (KindOf(m_field)) {
    case WhereKind::Severity:
      return ReadSeverity(value);
    case WhereKind::Number:
      return ReadNumber(value);
    case WhereKind::Id:
      return ReadId(value);
    case WhereKind::Moment:
      return ReadMoment(value);
    case WhereKind::Duration:
      return ReadDuration(value);
    case WhereKind::Name:
    case WhereKind::Text:
    case WhereKind::Flag:
      break;
  }
  return true;
}

bool ValueReader::ReadSeverity(WhereValue& value) {
  struct Word {
    const char* word;
    WhereSeverity severity;
  };
  constexpr Word kWords[] = {{"info", WhereSeverity::Info},
                             {"warn", WhereSeverity::Warn},
                             {"warning", WhereSeverity::Warn},
                             {"error", WhereSeverity::Error}};
  const std::string text = std::move(value.text);
  value.text.clear();
  for (const Word& word : kWords) {
    if (CompareIgnoringCase(word.word, text) != 0) continue;
    value.severity = word.severity;
    return true;
  }
  return m_input.FailAt(
      m_token,
      InQuotes(m_token.text) + " is no severity" + DidYouMean(text, {"info", "warn", "error"}),
      Expected(WhereNext::What::Value));
}

bool ValueReader::TakeRange(const WhereRange& range, WhereValue& value) {
  if (range.from > range.to)
    return m_input.FailAt(m_token, "this range ends before it begins",
                          Expected(WhereNext::What::Value));
  if (m_op != WhereOperator::In)
    return m_input.FailAt(m_token, "a range stands behind \"in\": in {10..20}",
                          Expected(WhereNext::What::Value));
  value.text.clear();
  value.from = range.from;
  value.to = range.to;
  value.isNumber = true;
  return true;
}

bool ValueReader::ReadNumber(WhereValue& value) {
  const std::string text = std::move(value.text);
  value.text.clear();
  if (const auto number = ReadWhereNumber(text)) {
    value.from = value.to = *number;
    value.isNumber = true;
    return true;
  }
  if (const auto range = ReadWhereRange(text)) return TakeRange(*range, value);
  return m_input.FailAt(m_token, InQuotes(m_token.text) + " is no number of at most 64 bits",
                        Expected(WhereNext::What::Value));
}

// In quotes there is no range, so that any name can be said.
bool ValueReader::ReadId(WhereValue& value) {
  if (const auto number = ReadWhereNumber(value.text)) {
    value.from = value.to = *number;
    value.isNumber = true;
    return true;
  }
  const auto range = ReadWhereRange(value.text);
  if (range && m_token.kind == TokenKind::Word) return TakeRange(*range, value);
  if (m_op == WhereOperator::Equal || m_op == WhereOperator::NotEqual || m_op == WhereOperator::In)
    return true;
  return m_input.FailAt(m_token, "\"<\" and \">\" compare with a number",
                        Expected(WhereNext::What::Value));
}

bool ValueReader::ReadDuration(WhereValue& value) {
  std::string why;
  const auto duration = ReadWhereDuration(value.text, &why);
  value.text.clear();
  if (!duration) return m_input.FailAt(m_token, why, Expected(WhereNext::What::Value));
  value.duration = *duration;
  return true;
}

bool ValueReader::ReadMoment(WhereValue& value) {
  std::string text = std::move(value.text);
  value.text.clear();
  if (CompareIgnoringCase(std::string_view(text).substr(0, 3), "end") == 0 &&
      m_token.kind == TokenKind::Word)
    return ReadEnd(value);
  // A blank between date and time of day.
  const WhereToken& next = m_input.Token();
  if (m_token.kind == TokenKind::Word && text.size() == 10 && next.kind == TokenKind::Word &&
      next.text.size() > 2 && next.text[2] == ':')
    text.append(" ").append(m_input.Take().text);
  std::string why;
  const auto moment = ReadWhereMoment(text, &why);
  if (!moment) {
    return m_input.FailAt(m_token, InQuotes(m_token.text) + " is no time; " + why,
                          Expected(WhereNext::What::Value));
  }
  value.moment = *moment;
  return true;
}

// "end", "end - 5m", "end -5m" and "end-5m".
bool ValueReader::ReadEnd(WhereValue& value) {
  value.moment.base = WhereMoment::Base::End;
  WhereToken rest = m_token;
  rest.place += 3;
  rest.text.remove_prefix(3);
  if (!rest.text.empty()) return ReadOffset(rest, value);
  const WhereToken& next = m_input.Token();
  const bool isOffset =
      next.kind == TokenKind::Word && (next.text[0] == '-' || next.text[0] == '+');
  return !isOffset || ReadOffset(m_input.Take(), value);
}

bool ValueReader::ReadOffset(WhereToken sign, WhereValue& value) {
  if (sign.text.front() != '-' && sign.text.front() != '+')
    return m_input.FailAt(m_token, InQuotes(m_token.text) + " is no time; did you mean end - 5m?",
                          Expected(WhereNext::What::Value));
  const bool before = sign.text.front() == '-';
  WhereToken span = sign;
  ++span.place;
  span.text.remove_prefix(1);
  if (span.text.empty()) {
    if (m_input.Token().kind != TokenKind::Word)
      return m_input.Fail("a time span is missing: end - 5m");
    span = m_input.Take();
  }
  std::string why;
  const bool isSigned = span.text.front() == '-' || span.text.front() == '+';
  const auto duration = ReadWhereDuration(span.text, &why);
  if (!duration || isSigned)
    return m_input.FailAt(span, duration ? "one sign is enough: end - 5m" : why);
  value.moment.nanoseconds = before ? -*duration : *duration;
  return true;
}

}  // namespace

bool ReadWhereValues(WhereInput& input, WhereExpr& test) {
  ValueReader reader(input, test.field, test.op);
  if (test.op == WhereOperator::In) return reader.ReadList(test.values);
  return reader.Read(test.values.emplace_back());
}
