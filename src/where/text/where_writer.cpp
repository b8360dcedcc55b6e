#include "where/text/where_writer.h"

#include <algorithm>

#include "where/text/where_lexer.h"
#include "where/text/where_values.h"

namespace {

using ExprKind = WhereExpr::Kind;

std::string HexEscapes(std::string_view bytes) {
  constexpr char kDigits[] = "0123456789abcdef";
  std::string text;
  for (const char c : bytes) {
    const auto byte = static_cast<unsigned char>(c);
    text.append("\\x").push_back(kDigits[byte >> 4]);
    text.push_back(kDigits[byte & 15]);
  }
  return text;
}

// One character of a text or pattern; gives its bytes.
std::size_t AppendShown(std::string_view text, std::size_t at, std::string& shown) {
  const std::size_t known = CharacterBytes(text, at);
  const std::size_t bytes = std::max<std::size_t>(1, known);
  const std::string_view character = text.substr(at, bytes);
  if (IsHiddenCharacter(text, at, known))
    shown.append(HexEscapes(character));
  else
    shown.append(character);
  return bytes;
}

std::string InQuotesAlways(std::string_view text) {
  std::string shown = "\"";
  for (std::size_t at = 0; at < text.size();) {
    const char c = text[at];
    if (c == '"' || c == '\\' || c == '\n' || c == '\t') {
      shown.push_back('\\');
      shown.push_back(c == '\n' ? 'n' : c == '\t' ? 't' : c);
      ++at;
    } else {
      at += AppendShown(text, at, shown);
    }
  }
  return shown + '"';
}

// Its backslashes are those of the pattern, so only a quote without one needs another. What PCRE2
// reads as one character stays one.
std::string PatternInQuotes(std::string_view pattern) {
  std::string shown = "\"";
  for (std::size_t at = 0; at < pattern.size();) {
    const bool escaped = pattern[at] == '\\' && at + 1 < pattern.size();
    const std::size_t place = at + (escaped ? 1 : 0);
    const char c = pattern[place];
    const std::size_t known = CharacterBytes(pattern, place);
    const bool control = static_cast<unsigned char>(c) < 0x20 || c == 0x7F;
    if (known == 0 || control) {
      shown.append(HexEscapes(pattern.substr(place, 1)));
    } else {
      if (escaped || c == '"' || c == '\\') shown.push_back('\\');
      shown.append(pattern.substr(place, known));
    }
    at = place + std::max<std::size_t>(1, known);
  }
  return shown + '"';
}

std::string RangeText(const WhereValue& value) {
  const std::string from = std::to_string(value.from);
  return value.from == value.to ? from : from + ".." + std::to_string(value.to);
}

// In quotes a name is no range.
std::string IdText(const WhereValue& value) {
  if (!value.isNumber)
    return ReadWhereRange(value.text) ? InQuotesAlways(value.text) : WhereQuoted(value.text);
  return value.text.empty() ? RangeText(value) : WhereQuoted(value.text);
}

void Append(const WhereExpr& expr, std::string& text);

void AppendInBrackets(const WhereExpr& expr, std::string& text) {
  text.push_back('(');
  Append(expr, text);
  text.push_back(')');
}

// "component", "component not": up to the operator.
void AppendTest(const WhereExpr& test, bool negated, std::string& text) {
  text.append(WordOf(test.field));
  if (test.op == WhereOperator::IsSet) return;
  text.append(negated ? " not " : " ").append(WordOf(test.op)).append(" ");
  const bool list = test.op == WhereOperator::In;
  if (list) text.push_back('{');
  for (std::size_t i = 0; i < test.values.size(); ++i)
    text.append(i > 0 ? ", " : "").append(WhereValueText(test.field, test.op, test.values[i]));
  if (list) text.push_back('}');
}

void AppendNot(const WhereExpr& negated, std::string& text) {
  if (negated.kind == ExprKind::Test && negated.op == WhereOperator::In)
    return AppendTest(negated, true, text);
  text.append("not ");
  if (negated.kind == ExprKind::Test)
    AppendTest(negated, false, text);
  else
    AppendInBrackets(negated, text);
}

void AppendJoined(const WhereExpr& expr, std::string& text) {
  const bool all = expr.kind == ExprKind::And;
  for (std::size_t i = 0; i < expr.children.size(); ++i) {
    const WhereExpr& child = expr.children[i];
    if (i > 0) text.append(all ? " and " : " or ");
    // "and" binds tighter, so only an Or within an And needs them.
    if (all && child.kind == ExprKind::Or)
      AppendInBrackets(child, text);
    else
      Append(child, text);
  }
}

void Append(const WhereExpr& expr, std::string& text) {
  if (expr.kind == ExprKind::Test)
    AppendTest(expr, false, text);
  else if (expr.kind == ExprKind::Not)
    AppendNot(expr.children.front(), text);
  else
    AppendJoined(expr, text);
}

constexpr const char* kSeverityWords[] = {"info", "warn", "error"};

}  // namespace

std::string WhereText(const WhereExpr& expr) {
  std::string text;
  Append(expr, text);
  return text;
}

std::string WhereValueText(WhereField field, WhereOperator op, const WhereValue& value) {
  if (op == WhereOperator::Matches) return PatternInQuotes(value.text);
  if (op == WhereOperator::Contains || op == WhereOperator::StartsWith)
    return InQuotesAlways(value.text);
  switch (KindOf(field)) {
    case WhereKind::Severity:
      return kSeverityWords[static_cast<std::size_t>(value.severity)];
    case WhereKind::Number:
      return RangeText(value);
    case WhereKind::Id:
      return IdText(value);
    case WhereKind::Moment:
      return MomentText(value.moment);
    case WhereKind::Duration:
      return DurationText(value.duration);
    case WhereKind::Name:
      return WhereQuoted(value.text);
    case WhereKind::Text:
    case WhereKind::Flag:
      break;
  }
  return InQuotesAlways(value.text);
}

std::string WhereQuoted(std::string_view text) {
  const bool bare = !text.empty() && !IsWhereKeyword(text) &&
                    std::all_of(text.begin(), text.end(), IsWhereWordByte);
  return bare ? std::string(text) : InQuotesAlways(text);
}
