#include "where/source/where_at_source.h"

#include <utility>

#include "where/text/where_writer.h"
#include "where/where_clock.h"

namespace {

using Base = WhereMoment::Base;
using O = WhereOperator;

struct Counted {
  std::size_t tests = 0, expressions = 0;
};

bool Fail(WhereError& error, std::size_t place, std::size_t length, std::string reason) {
  error = {place, length, std::move(reason), {}};
  return false;
}

bool TestIsTaken(const WhereExpr& test, Counted& counted, WhereError& error) {
  const auto fail = [&](const WhereValue& value, std::string reason) {
    return Fail(error, value.place, value.length, std::move(reason));
  };
  if (test.field == WhereField::Delta)
    return Fail(error, test.place, test.length,
                "the source does not know the trace before: \"delta\" works in the window only");
  if (test.field == WhereField::Marked || test.field == WhereField::Note)
    return Fail(error, test.place, test.length,
                "the source does not know marks and notes: \"" + std::string(WordOf(test.field)) +
                    "\" works in the window only");
  for (const WhereValue& value : test.values) {
    if (test.field != WhereField::Time) break;
    if (value.moment.base == Base::End)
      return fail(value,
                  "the source does not know the newest trace: \"end\" works in the window only");
    if (value.moment.base == Base::Shown)
      return fail(value, "the source does not know the zone: a time needs one, as \"Z\"");
  }
  if (test.op == O::Matches) {
    if (++counted.expressions > kSourceExpressionsMax)
      return fail(test.values.front(), "at the source a text has at most " +
                                           std::to_string(kSourceExpressionsMax) + " \"matches\"");
    if (test.values.front().text.size() > kSourceExpressionBytes)
      return fail(test.values.front(), "at the source an expression has at most " +
                                           std::to_string(kSourceExpressionBytes) + " bytes");
  }
  if (++counted.tests <= kSourceTestsMax) return true;
  return Fail(
      error, test.place, test.length,
      "at the source a text compares at most " + std::to_string(kSourceTestsMax) + " fields");
}

bool IsTaken(const WhereExpr& expr, Counted& counted, WhereError& error) {
  if (expr.kind == WhereExpr::Kind::Test) return TestIsTaken(expr, counted, error);
  for (const WhereExpr& child : expr.children)
    if (!IsTaken(child, counted, error)) return false;
  return true;
}

bool IsShort(std::size_t bytes, WhereError& error) {
  return bytes <= kSourceTextMax ||
         Fail(error, kSourceTextMax, 0,
              "at the source a text has at most " + std::to_string(kSourceTextMax) + " bytes");
}

WhereExpr TimeTest(const WhereExpr& test, O op, std::int64_t moment) {
  WhereExpr made = test;
  made.op = op;
  // The least span, so that all of the moment is written.
  made.values.front().moment = {Base::Utc, moment, 1};
  return made;
}

// A time of a clock that shows a zone, as moments.
WhereExpr Zoned(const WhereExpr& test, const WhereClock& clock) {
  const WhereMoment& said = test.values.front().moment;
  const std::int64_t from = *MomentOf(said, clock);
  if (test.op != O::Equal && test.op != O::NotEqual) return TimeTest(test, test.op, from);
  WhereExpr within = WhereAll(
      {TimeTest(test, O::GreaterEqual, from), TimeTest(test, O::Less, *MomentBehind(said, clock))});
  return test.op == O::Equal ? within : WhereNot(std::move(within));
}

WhereExpr WithZones(WhereExpr expr, const WhereClock& clock) {
  if (expr.kind == WhereExpr::Kind::Test) {
    const bool shown =
        expr.field == WhereField::Time && expr.values.front().moment.base == Base::Shown;
    return shown ? Zoned(expr, clock) : expr;
  }
  const auto kind = expr.kind;
  std::vector<WhereExpr> children;
  for (WhereExpr& child : expr.children) children.push_back(WithZones(std::move(child), clock));
  if (kind == WhereExpr::Kind::Not) return WhereNot(std::move(children.front()));
  return kind == WhereExpr::Kind::And ? WhereAll(std::move(children))
                                      : WhereAny(std::move(children));
}

}  // namespace

std::optional<WhereExpr> ParseAtSource(std::string_view text, WhereError& error) {
  if (!IsShort(text.size(), error)) return std::nullopt;
  std::optional<WhereExpr> expr = ParseWhere(text, error);
  Counted counted;
  if (expr && !IsTaken(*expr, counted, error)) return std::nullopt;
  return expr;
}

std::optional<std::string> TextAtSource(const WhereExpr& expr, bool utc, WhereError& error) {
  const WhereExpr zoned = WithZones(expr, {.utc = utc});
  Counted counted;
  if (!IsTaken(zoned, counted, error)) return std::nullopt;
  std::string text = WhereText(zoned);
  if (!IsShort(text.size(), error)) return std::nullopt;
  return text;
}
