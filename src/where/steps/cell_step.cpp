#include "where/steps/cell_step.h"

#include <algorithm>
#include <limits>

#include "records/process_name.h"
#include "where/text/where_lexer.h"
#include "where/text/where_parser.h"
#include "where/text/where_values.h"
#include "where/text/where_writer.h"

namespace {

WhereExpr IsEqual(WhereField field, WhereValue value) {
  WhereExpr test;
  test.field = field;
  test.op = WhereOperator::Equal;
  test.values.push_back(std::move(value));
  return test;
}

WhereExpr IsText(WhereField field, std::string_view text) {
  WhereValue value;
  value.text = std::string(text);
  const auto number =
      KindOf(field) == WhereKind::Id ? ReadWhereNumber(text) : std::optional<std::uint64_t>();
  value.isNumber = number.has_value();
  value.from = value.to = number.value_or(0);
  return IsEqual(field, std::move(value));
}

WhereExpr IsProcess(std::string_view name) {
  const ProcessName process = ProcessName::Of(name);
  WhereExpr pid = IsText(WhereField::Pid, process.process);
  if (process.account.empty()) return pid;
  return WhereAll({std::move(pid), IsText(WhereField::Account, process.account)});
}

std::optional<WhereExpr> Parsed(std::string_view text) {
  WhereError error;
  return ParseWhere(text, error);
}

// The test that the value of a cell passes.
std::optional<WhereExpr> IsThis(WhereField field, std::string_view value) {
  if (field == WhereField::Pid) return IsProcess(value);
  switch (KindOf(field)) {
    case WhereKind::Name:
    case WhereKind::Text:
    case WhereKind::Id:
      return IsText(field, value);
    case WhereKind::Flag:
      return Parsed(WordOf(field));
    case WhereKind::Duration:
      return std::nullopt;  // of no use: it hardly comes twice
    case WhereKind::Severity:
    case WhereKind::Number:
    case WhereKind::Moment:
      break;
  }
  // In quotes a value cannot become more than one.
  return Parsed(std::string(WordOf(field)) + " == " + WhereQuoted(value));
}

WhereExpr Negated(WhereExpr expr) {
  if (expr.kind != WhereExpr::Kind::Test || expr.op != WhereOperator::Equal)
    return WhereNot(std::move(expr));
  expr.op = WhereOperator::NotEqual;
  return expr;
}

// The parts that must all hold.
std::vector<WhereExpr> Parts(WhereExpr expr) {
  if (expr.kind == WhereExpr::Kind::And) return std::move(expr.children);
  std::vector<WhereExpr> one;
  one.push_back(std::move(expr));
  return one;
}

}  // namespace

std::optional<std::string> OnlyThis(WhereField field, std::string_view value) {
  const auto test = IsThis(field, value);
  return test ? std::optional(WhereText(*test)) : std::nullopt;
}

std::optional<std::string> HideThis(WhereField field, std::string_view value) {
  auto test = IsThis(field, value);
  return test ? std::optional(WhereText(Negated(std::move(*test)))) : std::nullopt;
}

std::string OnlyThisThread(const WhereThread& thread) {
  return WhereText(WhereAll({IsText(WhereField::Machine, thread.machine), IsProcess(thread.process),
                             IsText(WhereField::Tid, thread.thread)}));
}

std::optional<std::string> OnlyBetween(std::int64_t firstNanoseconds,
                                       std::int64_t lastNanoseconds) {
  const auto text = [](std::int64_t moment) {
    // Traces have milliseconds; what the source has beyond them is kept.
    constexpr std::int64_t kMillisecond = 1'000'000;
    const std::int64_t span = moment % kMillisecond == 0 ? kMillisecond : 1;
    return MomentText({WhereMoment::Base::Utc, moment, span});
  };
  const auto both =
      Parsed("time >= " + text(firstNanoseconds) + " and time <= " + text(lastNanoseconds));
  return both ? std::optional(WhereText(*both)) : std::nullopt;
}

std::optional<std::string> OnlyAroundTime(std::int64_t utcNanoseconds, std::int64_t nanoseconds) {
  std::int64_t first = 0, last = 0;
  if (__builtin_sub_overflow(utcNanoseconds, nanoseconds, &first) ||
      __builtin_add_overflow(utcNanoseconds, nanoseconds, &last))
    return std::nullopt;
  return OnlyBetween(first, last);
}

std::string OnlyAroundTic(std::uint64_t tic, std::uint64_t distance) {
  WhereValue value;
  value.from = tic - std::min(tic, distance);
  value.to = tic + std::min(std::numeric_limits<std::uint64_t>::max() - tic, distance);
  value.isNumber = true;
  WhereExpr test = IsEqual(WhereField::Tic, value);
  test.op = WhereOperator::In;
  return WhereText(test);
}

std::optional<std::string> WithStep(std::string_view text, std::string_view step) {
  const bool isEmpty = std::all_of(text.begin(), text.end(), IsWhereBlank);
  auto added = Parsed(step);
  if (!added) return std::nullopt;
  if (isEmpty) return WhereText(*added);
  auto before = Parsed(text);
  if (!before) return std::nullopt;
  std::vector<WhereExpr> parts;
  for (std::vector<WhereExpr> more : {Parts(std::move(*before)), Parts(std::move(*added))})
    for (WhereExpr& part : more)
      if (std::find(parts.begin(), parts.end(), part) == parts.end())
        parts.push_back(std::move(part));
  std::string both = WhereText(WhereAll(std::move(parts)));
  return Parsed(both) ? std::optional(std::move(both)) : std::nullopt;
}
