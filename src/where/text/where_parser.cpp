#include "where/text/where_parser.h"

#include "base/near/near_word.h"
#include "where/text/where_input.h"
#include "where/text/where_value_reader.h"

namespace {

using TokenKind = WhereToken::Kind;

bool IsNot(const WhereToken& token) {
  return token.IsWord("not") || token.IsSign("!");
}
bool IsAnd(const WhereToken& token) {
  return token.IsWord("and") || token.IsSign("&&");
}
bool IsOr(const WhereToken& token) {
  return token.IsWord("or") || token.IsSign("||");
}

std::optional<WhereOperator> OperatorOf(const WhereToken& token) {
  if (token.IsSign("~")) return WhereOperator::Matches;
  for (std::size_t i = 0; i < kWhereOperators; ++i) {
    const auto op = static_cast<WhereOperator>(i);
    const std::string_view word = WordOf(op);
    if (!word.empty() && (token.IsSign(word) || token.IsWord(word))) return op;
  }
  return std::nullopt;
}

struct OtherSign {
  std::string_view sign, ours;
};
std::string SignHint(const WhereToken& token, const OtherSign* signs, std::size_t count) {
  for (std::size_t i = 0; i < count; ++i)
    if (token.IsSign(signs[i].sign)) return "; did you mean " + InQuotes(signs[i].ours) + "?";
  return {};
}
// For signs that other languages have.
std::string OperatorHint(const WhereToken& token) {
  constexpr OtherSign kOthers[] = {{"=", "=="}, {"=~", "matches"}, {"<>", "!="}};
  return SignHint(token, kOthers, std::size(kOthers));
}
std::string ConnectorHint(const WhereToken& token) {
  constexpr OtherSign kOthers[] = {{"&", "and"}, {"|", "or"}};
  return SignHint(token, kOthers, std::size(kOthers));
}

std::string Listed(const std::vector<std::string>& words) {
  std::string list;
  for (const std::string& word : words) list.append(list.empty() ? "" : ", ").append(word);
  return list;
}

class Parser {
 public:
  Parser(std::string_view text, WhereError& error) : m_input(text, error) {}

  bool ParseAll(WhereExpr& expr);
  WhereNext Next(bool whole) const;

 private:
  bool ParseOr(WhereExpr& expr);
  bool ParseAnd(WhereExpr& expr);
  bool ParseNot(WhereExpr& expr);
  bool ParseBrackets(WhereExpr& expr);
  bool ParseTest(WhereExpr& test);
  bool StandsAlone(WhereField field) const;
  bool ParseOperator(WhereExpr& test, bool negated);
  bool FailNoOperator(const WhereExpr& test, bool negated);
  bool FailNoTest();
  bool FailBehind();
  WhereNext AfterTest() const;

  WhereInput m_input;
  std::optional<WhereField> m_lastAlone;  // the last test, if it is a field without an operator
};

WhereNext Parser::AfterTest() const {
  WhereNext next{WhereNext::What::AfterTest};
  next.closes = m_input.open > 0;
  next.isCompared = m_lastAlone && OperatorsOf(*m_lastAlone).size() > 1;
  if (m_lastAlone) next.field = *m_lastAlone;
  return next;
}

WhereNext Parser::Next(bool whole) const {
  return whole ? AfterTest() : m_input.Next();
}

bool Parser::ParseAll(WhereExpr& expr) {
  if (!ParseOr(expr)) return false;
  return m_input.IsAtEnd() || FailBehind();
}

bool Parser::ParseOr(WhereExpr& expr) {
  std::vector<WhereExpr> parts(1);
  if (!ParseAnd(parts.back())) return false;
  while (IsOr(m_input.Token())) {
    m_input.Take();
    if (!ParseAnd(parts.emplace_back())) return false;
  }
  expr = WhereAny(std::move(parts));
  return true;
}

bool Parser::ParseAnd(WhereExpr& expr) {
  std::vector<WhereExpr> parts(1);
  if (!ParseNot(parts.back())) return false;
  while (IsAnd(m_input.Token())) {
    m_input.Take();
    if (!ParseNot(parts.emplace_back())) return false;
  }
  expr = WhereAll(std::move(parts));
  return true;
}

bool Parser::ParseNot(WhereExpr& expr) {
  const std::size_t place = m_input.Token().place;
  bool negated = false;
  for (; IsNot(m_input.Token()); m_input.Take()) negated = !negated;
  const bool parsed = m_input.Token().IsSign("(") ? ParseBrackets(expr) : ParseTest(expr);
  if (!parsed) return false;
  if (negated) expr = WhereNot(std::move(expr));
  expr.place = place;
  expr.length = m_input.TakenEnd() - place;
  return true;
}

bool Parser::ParseBrackets(WhereExpr& expr) {
  if (m_input.open >= kWhereDepthMax)
    return m_input.Fail("more than " + std::to_string(kWhereDepthMax) +
                        " brackets inside each other");
  m_input.Take();
  ++m_input.open;
  if (!ParseOr(expr)) return false;
  if (!m_input.Token().IsSign(")")) return FailBehind();
  m_input.Take();
  --m_input.open;
  m_lastAlone.reset();
  return true;
}

bool Parser::ParseTest(WhereExpr& test) {
  const WhereToken token = m_input.Token();
  const WhereFieldInfo* info = token.kind == TokenKind::Word ? FieldOfWord(token.text) : nullptr;
  if (!info) return FailNoTest();
  if (++m_input.tests > kWhereTestsMax)
    return m_input.Fail("more than " + std::to_string(kWhereTestsMax) + " tests");
  m_input.Take();
  test.field = info->field;
  m_lastAlone.reset();
  if (StandsAlone(test.field)) {
    m_lastAlone = test.field;
  } else {
    const bool negated = IsNot(m_input.Token());
    if (negated) m_input.Take();
    if (!ParseOperator(test, negated)) return false;
    test.place = token.place;
    test.length = m_input.TakenEnd() - token.place;
    if (negated) test = WhereNot(std::move(test));
  }
  test.place = token.place;
  test.length = m_input.TakenEnd() - token.place;
  return true;
}

// The field is taken: is what follows no comparison?
bool Parser::StandsAlone(WhereField field) const {
  if (!TakesOperator(field, WhereOperator::IsSet)) return false;
  const WhereToken& next = m_input.Token();
  if (OperatorOf(next) || !OperatorHint(next).empty()) return false;
  if (!IsNot(next)) return true;
  // "stack not contains", also while it is typed.
  const WhereToken following = m_input.Following();
  const bool mayGoOn = following.kind == TokenKind::End && KindOf(field) != WhereKind::Flag;
  return !OperatorOf(following) && !mayGoOn;
}

bool Parser::ParseOperator(WhereExpr& test, bool negated) {
  const auto op = OperatorOf(m_input.Token());
  if (!op || !TakesOperator(test.field, *op) || (negated && *op < WhereOperator::In))
    return FailNoOperator(test, negated);
  m_input.Take();
  test.op = *op;
  return ReadWhereValues(m_input, test);
}

bool Parser::FailNoOperator(const WhereExpr& test, bool negated) {
  const WhereToken& token = m_input.Token();
  const std::string word(WordOf(test.field)), field = InQuotes(word);
  if (KindOf(test.field) == WhereKind::Flag)
    return m_input.Fail(field + " stands alone: " + word + ", not " + word);
  const WhereNext next{negated ? WhereNext::What::AfterNot : WhereNext::What::Operator, test.field};
  const std::vector<std::string> words = ExpectedWords(next);
  if (words.empty()) return m_input.Fail("\"not\" stands before " + field);
  const std::string takes =
      "; behind " + InQuotes(negated ? word + " not" : word) + " stands " + Listed(words);
  if (token.kind == TokenKind::End) return m_input.Fail("an operator is missing" + takes, next);
  if (OperatorOf(token))
    return m_input.Fail(field + " cannot be compared by " + InQuotes(token.text) + takes, next);
  std::string hint = OperatorHint(token);
  if (hint.empty() && token.kind == TokenKind::Word) hint = DidYouMean(token.text, words);
  return m_input.Fail(InQuotes(token.text) + " is no operator" + (hint.empty() ? takes : hint),
                      next);
}

bool Parser::FailNoTest() {
  const WhereToken& token = m_input.Token();
  const WhereNext next{WhereNext::What::Test};
  if (token.kind == TokenKind::End) {
    return m_input.Fail(
        m_input.TakenEnd() == 0 ? "the filter text is empty" : "a test is missing here", next);
  }
  if (token.kind != TokenKind::Word || IsWhereKeyword(token.text))
    return m_input.Fail("a test is missing before " + InQuotes(token.text), next);
  const std::string hint = DidYouMean(token.text, WhereFieldWords());
  return m_input.Fail("there is no field " + InQuotes(token.text) + hint, next);
}

// Something stands where a test has ended.
bool Parser::FailBehind() {
  const WhereToken& token = m_input.Token();
  const WhereNext next = AfterTest();
  if (token.kind == TokenKind::End) return m_input.Fail("\")\" is missing", next);
  if (token.IsSign(")")) return m_input.Fail("no bracket is open here", next);
  std::string reason = "\"and\" or \"or\" is missing before " + InQuotes(token.text);
  std::string hint = ConnectorHint(token);
  if (hint.empty() && token.kind == TokenKind::Word) {
    hint = DidYouMean(token.text, {"and", "or"});
    if (hint.empty() && !FieldOfWord(token.text) && !IsNot(token))
      hint = "; a name or text with blanks stands in quotes";
  }
  return m_input.Fail(reason + hint, next);
}

}  // namespace

std::optional<WhereExpr> ParseWhere(std::string_view text, WhereError& error) {
  error = {};
  if (text.size() > kWhereTextMax) {
    error = {kWhereTextMax, 0, "a filter text has 64 KiB at most", {}};
    return std::nullopt;
  }
  WhereExpr expr;
  if (!Parser(text, error).ParseAll(expr)) return std::nullopt;
  return expr;
}

WhereNext NextInWhere(std::string_view beginning) {
  if (beginning.size() > kWhereTextMax) return {};
  WhereError error;
  Parser parser(beginning, error);
  WhereExpr expr;
  return parser.Next(parser.ParseAll(expr));
}
