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

// Leaves the intervals within these numbers.
void Cut(std::vector<WhereInterval>& intervals, std::uint64_t first, std::uint64_t last) {
  std::erase_if(intervals,
                [&](const WhereInterval& one) { return one.last < first || one.first > last; });
  for (WhereInterval& one : intervals) {
    one.first = std::max(one.first, first);
    one.last = std::min(one.last, last);
  }
}

std::vector<WhereInterval> NumberIntervals(const WhereRule& test) {
  if (test.op == O::IsSet) return {{1, kLast}};
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
  // Kept in the record as a number, and meaning none.
  if (test.field == F::Count) Cut(intervals, 0, kNoSequenceNumber - 1);
  if (test.field == F::Tic || test.field == F::Marked) Cut(intervals, 1, kLast);
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

bool IsTextTest(const WhereRule& test) {
  return test.field == F::Text || test.field == F::Stack || test.field == F::Note;
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

bool IsNumberTest(const WhereRule& rule) {
  return rule.kind == WhereRule::Kind::Test && !KeyPlaceOf(rule) && !IsTextTest(rule) &&
         rule.field != F::Delta && rule.field != F::Marked;
}

// Joins the rules on the same number of the record, which one table answers.
void Fold(WhereRule& rule) {
  std::vector<WhereRule> folded;
  for (WhereRule& one : rule.rules) {
    Fold(one);
    const std::optional<std::uint8_t> place = KeyPlaceOf(one);
    const auto same = std::find_if(folded.begin(), folded.end(), [&](const WhereRule& other) {
      return place && KeyPlaceOf(other) == place;
    });
    if (same == folded.end()) {
      folded.push_back(std::move(one));
    } else if (same->kind == rule.kind) {
      same->rules.push_back(std::move(one));
    } else {
      WhereRule both;
      both.kind = rule.kind;
      both.rules.push_back(std::move(*same));
      both.rules.push_back(std::move(one));
      *same = std::move(both);
    }
  }
  rule.rules = std::move(folded);
}

// How many bits of an index the rule needs; nothing if it asks for more than ids and numbers.
std::optional<std::size_t> BitsOf(const WhereRule& rule) {
  if (KeyPlaceOf(rule) || IsNumberTest(rule)) return 1;
  if (rule.kind == WhereRule::Kind::Test) return std::nullopt;
  std::size_t bits = 0;
  for (const WhereRule& one : rule.rules) {
    const std::optional<std::size_t> some = BitsOf(one);
    if (!some) return std::nullopt;
    bits += *some;
  }
  return bits;
}
bool IsCheap(const WhereRule& rule) {
  const std::optional<std::size_t> bits = BitsOf(rule);
  return bits && *bits <= WhereCheap::kBitsMax;
}

using Units = std::vector<const WhereRule*>;

// The rules that are answered by a bit each: tables, or number tests.
void CollectUnits(const WhereRule& rule, bool tables, Units& units) {
  const bool isTable = KeyPlaceOf(rule).has_value();
  if (isTable || IsNumberTest(rule)) {
    if (isTable == tables) units.push_back(&rule);
    return;
  }
  for (const WhereRule& one : rule.rules) CollectUnits(one, tables, units);
}

bool Answer(const WhereRule& rule, const Units& units, std::size_t bits) {
  const auto unit = std::find(units.begin(), units.end(), &rule);
  if (unit != units.end()) return (bits >> (unit - units.begin()) & 1) != 0;
  const auto answer = [&](const WhereRule& one) { return Answer(one, units, bits); };
  return rule.kind == WhereRule::Kind::All
             ? std::all_of(rule.rules.begin(), rule.rules.end(), answer)
             : std::any_of(rule.rules.begin(), rule.rules.end(), answer);
}

// Packs the cheap rules into as few as fit the bits, before the others.
void PackCheap(WhereRule& rule) {
  std::vector<WhereRule> packed, others;
  std::size_t bits = WhereCheap::kBitsMax;
  for (WhereRule& one : rule.rules) {
    if (!IsCheap(one)) {
      others.push_back(std::move(one));
      continue;
    }
    const std::size_t more = *BitsOf(one);
    if (bits + more > WhereCheap::kBitsMax) {
      packed.emplace_back().kind = rule.kind;
      bits = 0;
    }
    bits += more;
    packed.back().rules.push_back(std::move(one));
  }
  std::stable_sort(others.begin(), others.end(),
                   [](const WhereRule& a, const WhereRule& b) { return CostOf(a) < CostOf(b); });
  std::move(others.begin(), others.end(), std::back_inserter(packed));
  rule.rules = std::move(packed);
}

class Compiler {
 public:
  WhereCode Compile(WhereRule rule) {
    Fold(rule);
    m_code.entry = Emit(std::move(rule), kWherePasses, kWhereFails);
    return std::move(m_code);
  }

 private:
  // Writes the steps of the rule, and before them those that they lead to: returns the first.
  std::uint32_t Emit(WhereRule rule, std::uint32_t onTrue, std::uint32_t onFalse);
  std::uint32_t EmitCheap(const WhereRule& rule, std::uint32_t onTrue, std::uint32_t onFalse);
  std::uint32_t EmitTest(WhereRule test, std::uint32_t onTrue, std::uint32_t onFalse);
  std::uint32_t Add(WhereStep::Kind kind, std::size_t index, std::uint32_t onTrue,
                    std::uint32_t onFalse) {
    m_code.steps.push_back({kind, static_cast<std::uint32_t>(index), onTrue, onFalse});
    return static_cast<std::uint32_t>(m_code.steps.size() - 1);
  }
  void AddNumber(const WhereRule& test);

  WhereCode m_code;
};

std::uint32_t Compiler::Emit(WhereRule rule, std::uint32_t onTrue, std::uint32_t onFalse) {
  if (IsCheap(rule)) return EmitCheap(rule, onTrue, onFalse);
  if (rule.kind == WhereRule::Kind::Test) return EmitTest(std::move(rule), onTrue, onFalse);
  const bool all = rule.kind == WhereRule::Kind::All;
  PackCheap(rule);
  // The last test decides; each one before it either decides or leads to the next.
  std::uint32_t next = all ? onTrue : onFalse;
  for (std::size_t i = rule.rules.size(); i-- > 0;)
    next = Emit(std::move(rule.rules[i]), all ? next : onTrue, all ? onFalse : next);
  return next;
}

std::uint32_t Compiler::EmitCheap(const WhereRule& rule, std::uint32_t onTrue,
                                  std::uint32_t onFalse) {
  Units units;
  CollectUnits(rule, true, units);
  WhereCheap& cheap = m_code.cheap.emplace_back();
  cheap.tables = static_cast<std::uint32_t>(units.size());
  CollectUnits(rule, false, units);
  cheap.numbers = static_cast<std::uint32_t>(units.size()) - cheap.tables;
  cheap.firstTable = static_cast<std::uint32_t>(m_code.tables.size());
  cheap.firstNumber = static_cast<std::uint32_t>(m_code.numbers.size());
  for (std::size_t bits = 0; bits < std::size_t{1} << units.size(); ++bits)
    cheap.truth.push_back(Answer(rule, units, bits) ? 1 : 0);
  for (std::size_t i = 0; i < units.size(); ++i) {
    if (i < cheap.tables)
      m_code.tables.push_back({*KeyPlaceOf(*units[i]), *units[i]});
    else
      AddNumber(*units[i]);
  }
  return Add(Kind::Cheap, m_code.cheap.size() - 1, onTrue, onFalse);
}

void Compiler::AddNumber(const WhereRule& test) {
  constexpr std::uint8_t kFourBytes = 32;
  WhereNumberTest& number = m_code.numbers.emplace_back();
  number.rule = test;
  if (test.field == F::Time) {
    // The date and behind it the time of day are a stamp as they stand.
    static_assert(TraceAt::kTime == TraceAt::kDate + 4);
    number.place = TraceAt::kDate;
    m_code.usesEnd = m_code.usesEnd || test.values.front().moment.base == WhereMoment::Base::End;
    return;
  }
  number.intervals = NumberIntervals(test);
  number.place = test.field == F::Count  ? TraceAt::kCount
                 : test.field == F::Line ? TraceAt::kSourceLine
                                         : TraceAt::kTicCount;
  number.shift = test.field == F::Tic ? 0 : kFourBytes;
}

std::uint32_t Compiler::EmitTest(WhereRule test, std::uint32_t onTrue, std::uint32_t onFalse) {
  if (test.field == F::Delta) {
    WhereNumberTest& delta = m_code.deltas.emplace_back();
    delta.intervals = DeltaIntervals(test);
    delta.rule = std::move(test);
    return Add(Kind::Delta, m_code.deltas.size() - 1, onTrue, onFalse);
  }
  m_code.usesMarks = m_code.usesMarks || test.field == F::Marked || test.field == F::Note;
  if (test.field == F::Marked) {
    WhereNumberTest& mark = m_code.marks.emplace_back();
    mark.intervals = NumberIntervals(test);
    mark.rule = std::move(test);
    return Add(Kind::Marked, m_code.marks.size() - 1, onTrue, onFalse);
  }
  const Kind kind = test.field == F::Stack  ? Kind::Stack
                    : test.field == F::Note ? Kind::Note
                                            : Kind::Text;
  m_code.texts.push_back(std::move(test));
  return Add(kind, m_code.texts.size() - 1, onTrue, onFalse);
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
