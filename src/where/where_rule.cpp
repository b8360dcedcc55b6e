#include "where/where_rule.h"

#include <algorithm>
#include <iterator>
#include <utility>

#include "records/process_name.h"
#include "records/raw_trace.h"
#include "where/text/where_values.h"

namespace {

using F = WhereField;
using O = WhereOperator;

// The place of a byte of an expression within the whole text. An expression keeps its backslashes,
// so only a quote stands before it.
std::size_t PlaceInText(const WhereValue& value, std::size_t place) {
  const std::size_t quotes = value.length > value.text.size() ? 1 : 0;
  return value.place + quotes + std::min(place, value.text.size());
}

std::optional<WhereRule> MakeTest(const WhereExpr& expr, bool negated, WhereError& error) {
  WhereRule test;
  test.negated = negated != (expr.op == O::NotEqual);
  test.field = expr.field;
  test.op = expr.op == O::NotEqual ? O::Equal : expr.op;
  test.values = expr.values;
  if (test.op == O::In)
    std::sort(test.values.begin(), test.values.end(),
              [](const WhereValue& a, const WhereValue& b) { return a.text < b.text; });
  if (expr.op != O::Matches) return test;
  const WhereValue& value = expr.values.front();
  std::size_t place = 0;
  std::string why;
  test.regex = WhereRegex::Compile(value.text, place, why);
  if (test.regex) return test;
  error = {PlaceInText(value, place), 1, "wrong expression: " + why, {}};
  const std::size_t end = value.place + value.length;
  if (error.place >= end) error = {value.place, value.length, std::move(error.reason), {}};
  return std::nullopt;
}

std::optional<WhereRule> MakeNegated(const WhereExpr& expr, bool negated, WhereError& error) {
  if (expr.kind == WhereExpr::Kind::Test) return MakeTest(expr, negated, error);
  if (expr.kind == WhereExpr::Kind::Not) return MakeNegated(expr.children.front(), !negated, error);
  WhereRule rule;
  rule.kind =
      (expr.kind == WhereExpr::Kind::And) != negated ? WhereRule::Kind::All : WhereRule::Kind::Any;
  for (const WhereExpr& child : expr.children) {
    std::optional<WhereRule> made = MakeNegated(child, negated, error);
    if (!made) return std::nullopt;
    // "not (a or b) and c" is one list.
    if (made->kind == rule.kind)
      std::move(made->rules.begin(), made->rules.end(), std::back_inserter(rule.rules));
    else
      rule.rules.push_back(std::move(*made));
  }
  return rule;
}

template <class Number>
bool Compares(O op, Number number, Number value) {
  switch (op) {
    case O::Less:
      return number < value;
    case O::LessEqual:
      return number <= value;
    case O::Greater:
      return number > value;
    case O::GreaterEqual:
      return number >= value;
    default:
      return number == value;
  }
}

bool NumberHolds(const WhereRule& test, std::uint64_t number) {
  if (test.op != O::Equal && test.op != O::In)
    return Compares(test.op, number, test.values.front().from);
  return std::any_of(test.values.begin(), test.values.end(), [number](const WhereValue& value) {
    return value.from <= number && number <= value.to;
  });
}

// As the filter dialog sees it: a trace with several severities has the first of them.
std::optional<WhereSeverity> SeverityOf(int attributes) {
  if (attributes & kAttributeInfo) return WhereSeverity::Info;
  if (attributes & kAttributeWarn) return WhereSeverity::Warn;
  if (attributes & kAttributeError) return WhereSeverity::Error;
  return std::nullopt;
}

// REQUIRES: the values are sorted by their texts.
bool IsOneOf(const std::vector<WhereValue>& values, std::string_view text) {
  const auto found = std::lower_bound(values.begin(), values.end(), text,
                                      [](const WhereValue& value, std::string_view wanted) {
                                        return std::string_view(value.text) < wanted;
                                      });
  return found != values.end() && found->text == text;
}

bool AttributesHold(const WhereRule& test, std::uint16_t attributes) {
  if (test.field == F::Developer) return (attributes & kAttributeDeveloper) != 0;
  if (test.field == F::Verbose) return (attributes & kAttributeVerbose) != 0;
  if (test.field == F::Attributes) return NumberHolds(test, attributes);
  const std::optional<WhereSeverity> severity = SeverityOf(attributes);
  return severity && std::any_of(test.values.begin(), test.values.end(), [&](const auto& value) {
           return Compares(test.op, *severity, value.severity);
         });
}

// Numbers compare by their values, so 0x10 is 16.
bool IdHolds(const WhereRule& test, std::string_view name, WhereRegexSearch& search) {
  const std::optional<std::uint64_t> number = ReadWhereNumber(name);
  switch (test.op) {
    case O::Contains:
    case O::StartsWith:
    case O::Matches:
      return TextHolds(test, name, search);
    case O::Equal:
    case O::In:
      return std::any_of(test.values.begin(), test.values.end(), [&](const WhereValue& value) {
        if (!value.isNumber) return value.text == name;
        return number && value.from <= *number && *number <= value.to;
      });
    default:
      return number && NumberHolds(test, *number);
  }
}

bool NameHolds(const WhereRule& test, std::string_view name, WhereRegexSearch& search) {
  if (test.field == F::Pid) return IdHolds(test, ProcessName::Of(name).process, search);
  if (test.field == F::Tid) return IdHolds(test, name, search);
  if (test.field == F::Account) name = ProcessName::Of(name).account;
  return TextHolds(test, name, search);
}

}  // namespace

std::optional<WhereRule> MakeRule(const WhereExpr& expr, WhereError& error) {
  return MakeNegated(expr, false, error);
}

std::optional<std::uint8_t> KeyPlaceOf(WhereField field) {
  switch (field) {
    case F::Severity:
    case F::Attributes:
    case F::Developer:
    case F::Verbose:
      return TraceAt::kAttributes;
    case F::Machine:
      return TraceAt::kMachine;
    case F::Application:
      return TraceAt::kApp;
    case F::Component:
      return TraceAt::kComponent;
    case F::Category:
      return TraceAt::kCategory;
    case F::Pid:
    case F::Account:
      return TraceAt::kPid;
    case F::Tid:
      return TraceAt::kTid;
    case F::File:
      return TraceAt::kSourceFile;
    default:
      return std::nullopt;
  }
}

std::optional<std::uint8_t> KeyPlaceOf(const WhereRule& rule) {
  if (rule.kind == WhereRule::Kind::Test) return KeyPlaceOf(rule.field);
  const std::optional<std::uint8_t> place = KeyPlaceOf(rule.rules.front());
  const bool same = std::all_of(rule.rules.begin(), rule.rules.end(),
                                [&](const WhereRule& one) { return KeyPlaceOf(one) == place; });
  return same ? place : std::nullopt;
}

bool HoldsFor(const WhereRule& rule, std::uint16_t number, std::string_view name,
              WhereRegexSearch& search) {
  const auto holds = [&](const WhereRule& one) { return HoldsFor(one, number, name, search); };
  switch (rule.kind) {
    case WhereRule::Kind::All:
      return std::all_of(rule.rules.begin(), rule.rules.end(), holds);
    case WhereRule::Kind::Any:
      return std::any_of(rule.rules.begin(), rule.rules.end(), holds);
    case WhereRule::Kind::Test:
      break;
  }
  const bool attributes = KeyPlaceOf(rule.field) == std::uint8_t{TraceAt::kAttributes};
  return rule.negated !=
         (attributes ? AttributesHold(rule, number) : NameHolds(rule, name, search));
}

bool TextHolds(const WhereRule& test, std::string_view text, WhereRegexSearch& search) {
  const std::string& wanted = test.values.front().text;
  switch (test.op) {
    case O::Contains:
      return text.find(wanted) != text.npos;
    case O::StartsWith:
      return text.starts_with(wanted);
    case O::Matches:
      return search.Finds(*test.regex, text);
    case O::In:
      return IsOneOf(test.values, text);
    default:
      return text == wanted;
  }
}
