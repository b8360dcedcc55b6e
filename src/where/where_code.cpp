#include "where/where_code.h"

#include <algorithm>
#include <iterator>
#include <utility>

namespace {

using F = WhereField;
using O = WhereOperator;
using Kind = WhereStep::Kind;
constexpr std::uint64_t kLast = ~std::uint64_t{0};

// Sorts the intervals and joins those that overlap.
void Merge(std::vector<WhereInterval>& intervals) {
  std::sort(intervals.begin(), intervals.end(),
            [](const WhereInterval& a, const WhereInterval& b) { return a.first < b.first; });
  std::vector<WhereInterval> merged;
  for (const WhereInterval& one : intervals) {
    if (merged.empty() || merged.back().last < one.first)
      merged.push_back(one);
    else
      merged.back().last = std::max(merged.back().last, one.last);
  }
  intervals = std::move(merged);
}

std::vector<WhereInterval> NumberIntervals(const WhereRule& test) {
  const WhereValue& value = test.values.front();
  std::vector<WhereInterval> intervals;
  switch (test.op) {
    case O::Less:
      if (value.from > 0) intervals.push_back({0, value.from - 1});
      break;
    case O::LessEqual:
      intervals.push_back({0, value.from});
      break;
    case O::Greater:
      if (value.from < kLast) intervals.push_back({value.from + 1, kLast});
      break;
    case O::GreaterEqual:
      intervals.push_back({value.from, kLast});
      break;
    default:
      for (const WhereValue& one : test.values) intervals.push_back({one.from, one.to});
      Merge(intervals);
  }
  return intervals;
}

// A span that so many picoseconds cannot hold is longer, or shorter, than each that they can.
std::vector<WhereInterval> DeltaIntervals(const WhereRule& test) {
  constexpr std::int64_t kPicoseconds = 1000;
  std::vector<WhereInterval> intervals;
  const std::int64_t span = test.values.front().duration;
  std::int64_t picoseconds = 0;
  const bool held = !__builtin_mul_overflow(span, kPicoseconds, &picoseconds);
  const bool below = test.op == O::Less || test.op == O::LessEqual;
  const bool above = test.op == O::Greater || test.op == O::GreaterEqual;
  if (!held) {
    if ((span > 0 && below) || (span < 0 && above)) intervals.push_back({0, kLast});
    return intervals;
  }
  const std::uint64_t order = DeltaOrder(picoseconds);
  const bool itself = test.op != O::Less && test.op != O::Greater;
  if (itself) intervals.push_back({order, order});
  if (below && order > 0) intervals.push_back({0, order - 1});
  if (above && order < kLast) intervals.push_back({order + 1, kLast});
  return intervals;
}

Kind KindOfTest(WhereField field) {
  switch (field) {
    case F::Count:
      return Kind::Count;
    case F::Tic:
      return Kind::Tic;
    case F::Line:
      return Kind::Line;
    case F::Delta:
      return Kind::Delta;
    case F::Time:
      return Kind::Time;
    case F::Stack:
      return Kind::Stack;
    default:
      return Kind::Text;
  }
}

bool IsTextTest(const WhereRule& test) {
  return test.field == F::Text || test.field == F::Stack;
}

// How long a rule may take, at its worst.
int CostOf(const WhereRule& rule) {
  if (KeyPlaceOf(rule)) return 0;
  if (rule.kind != WhereRule::Kind::Test) {
    int cost = 0;
    for (const WhereRule& one : rule.rules) cost = std::max(cost, CostOf(one));
    return cost;
  }
  if (!IsTextTest(rule)) return 1;
  if (rule.op == O::Matches) return 4;
  return rule.op == O::Contains ? 3 : 2;
}

class Compiler {
 public:
  WhereCode Compile(WhereRule rule) {
    m_code.entry = Emit(std::move(rule), kWherePasses, kWhereFails);
    return std::move(m_code);
  }

 private:
  // Writes the steps of the rule, and before them those that they lead to: returns the first.
  std::uint32_t Emit(WhereRule rule, std::uint32_t onTrue, std::uint32_t onFalse);
  std::uint32_t EmitTables(std::vector<WhereTable> tables, bool all, std::uint32_t onTrue,
                           std::uint32_t onFalse);
  std::uint32_t EmitTest(WhereRule test, std::uint32_t onTrue, std::uint32_t onFalse);
  std::uint32_t Add(WhereStep step) {
    m_code.steps.push_back(step);
    return static_cast<std::uint32_t>(m_code.steps.size() - 1);
  }

  WhereCode m_code;
};

// Takes the rules that one table each can answer: those on the same number share one.
std::vector<WhereTable> TakeTables(WhereRule& rule) {
  std::vector<WhereTable> tables;
  std::vector<WhereRule> others;
  for (WhereRule& one : rule.rules) {
    const std::optional<std::uint8_t> place = KeyPlaceOf(one);
    if (!place) {
      others.push_back(std::move(one));
      continue;
    }
    const auto same = std::find_if(tables.begin(), tables.end(),
                                   [&](const WhereTable& table) { return table.place == *place; });
    WhereTable& table = same == tables.end() ? tables.emplace_back() : *same;
    table.place = *place;
    table.rule.kind = rule.kind;
    table.rule.rules.push_back(std::move(one));
  }
  rule.rules = std::move(others);
  return tables;
}

std::uint32_t Compiler::Emit(WhereRule rule, std::uint32_t onTrue, std::uint32_t onFalse) {
  if (const auto place = KeyPlaceOf(rule)) {
    std::vector<WhereTable> one(1);
    one[0].place = *place;
    one[0].rule = std::move(rule);
    return EmitTables(std::move(one), true, onTrue, onFalse);
  }
  if (rule.kind == WhereRule::Kind::Test) return EmitTest(std::move(rule), onTrue, onFalse);
  const bool all = rule.kind == WhereRule::Kind::All;
  std::vector<WhereTable> tables = TakeTables(rule);
  std::stable_sort(rule.rules.begin(), rule.rules.end(),
                   [](const WhereRule& a, const WhereRule& b) { return CostOf(a) < CostOf(b); });
  // The last test decides; each one before it either decides or leads to the next.
  std::uint32_t next = all ? onTrue : onFalse;
  for (std::size_t i = rule.rules.size(); i-- > 0;)
    next = Emit(std::move(rule.rules[i]), all ? next : onTrue, all ? onFalse : next);
  if (tables.empty()) return next;
  return EmitTables(std::move(tables), all, all ? next : onTrue, all ? onFalse : next);
}

std::uint32_t Compiler::EmitTables(std::vector<WhereTable> tables, bool all, std::uint32_t onTrue,
                                   std::uint32_t onFalse) {
  WhereStep step{all ? Kind::AllTables : Kind::AnyTable};
  step.index = static_cast<std::uint32_t>(m_code.tables.size());
  step.count = static_cast<std::uint32_t>(tables.size());
  step.onTrue = onTrue;
  step.onFalse = onFalse;
  std::move(tables.begin(), tables.end(), std::back_inserter(m_code.tables));
  return Add(step);
}

std::uint32_t Compiler::EmitTest(WhereRule test, std::uint32_t onTrue, std::uint32_t onFalse) {
  WhereStep step{KindOfTest(test.field)};
  step.onTrue = onTrue;
  step.onFalse = onFalse;
  if (IsTextTest(test)) {
    step.index = static_cast<std::uint32_t>(m_code.texts.size());
    m_code.texts.push_back(std::move(test));
    return Add(step);
  }
  m_code.usesDelta = m_code.usesDelta || test.field == F::Delta;
  step.index = static_cast<std::uint32_t>(m_code.numbers.size());
  WhereNumberTest& number = m_code.numbers.emplace_back();
  number.negated = test.negated;
  if (step.kind == Kind::Delta) number.intervals = DeltaIntervals(test);
  if (step.kind == Kind::Time)
    m_code.usesEnd = m_code.usesEnd || test.values.front().moment.base == WhereMoment::Base::End;
  if (step.kind != Kind::Delta && step.kind != Kind::Time) number.intervals = NumberIntervals(test);
  number.rule = std::move(test);
  return Add(step);
}

}  // namespace

WhereCode MakeCode(WhereRule rule) {
  return Compiler().Compile(std::move(rule));
}

std::vector<WhereInterval> StampIntervals(const WhereRule& test, const WhereClock& clock) {
  const WhereMoment& said = test.values.front().moment;
  const std::optional<std::int64_t> moment = MomentOf(said, clock);
  if (!moment) return {};
  switch (test.op) {
    case O::Less:
      return {{0, StampFrom(*moment) - 1}};
    case O::LessEqual:
      return {{0, StampAfter(*moment) - 1}};
    case O::Greater:
      return {{StampAfter(*moment), kLastStamp}};
    case O::GreaterEqual:
      return {{StampFrom(*moment), kLastStamp}};
    default:
      break;
  }
  const WhereInterval within{StampFrom(*moment), StampFrom(*MomentBehind(said, clock)) - 1};
  if (within.first > within.last) return {};
  return {within};
}
