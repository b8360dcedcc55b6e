#include "where/where_matcher.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

namespace {

using Kind = WhereStep::Kind;

// A field of a record up to its first NUL, which is looked for only where it matters.
struct TextField {
  const char* text;
  std::size_t length;

  bool Contains(const std::string& wanted) const {
    const auto* const found =
        static_cast<const char*>(memmem(text, length, wanted.data(), wanted.size()));
    if (!found) return false;
    return wanted.find('\0') == wanted.npos &&
           !std::memchr(text, 0, static_cast<std::size_t>(found - text));
  }
  std::string_view UpToItsNul() const { return {text, strnlen(text, length)}; }
};

TextField FieldOf(const WhereStep& step, const std::uint8_t* record) {
  const RawTrace trace(record);
  const auto* text = reinterpret_cast<const char*>(record + TraceAt::kText);
  const std::size_t length = trace.TextLength();
  if (step.kind == Kind::Text) return {text, length};
  return {text + length + kTextLengthBytes, trace.StackLength()};
}

bool TextTestHolds(const WhereRule& test, const TextField& field, WhereRegexSearch& search) {
  // Before the text is read to its end.
  if (test.op == WhereOperator::Matches && !test.regex->MayBeginWith(field.text, field.length))
    return false;
  if (test.op == WhereOperator::Matches)
    return search.FindsInField(*test.regex, field.text, field.length);
  if (test.op == WhereOperator::IsSet) return !field.UpToItsNul().empty();
  if (test.op == WhereOperator::Contains) return field.Contains(test.values.front().text);
  return TextHolds(test, field.UpToItsNul(), search);
}

}  // namespace

WhereMatcher::WhereMatcher(WhereProgramPtr program, const NameMap& names, const WhereClock& clock)
    : m_program(std::move(program)),
      m_code(m_program->Code()),
      m_names(names),
      m_stamps(m_code.numbers.size()) {
  MakeTables();
  SetClock(clock);
  for (const WhereCheap& one : m_code.cheap) {
    const Table* const table = m_tables.data() + one.firstTable;
    const Number* const number = m_numbers.data() + one.firstNumber;
    m_cheap.push_back({table, table + one.tables, number, number + one.numbers, one.truth.data()});
  }
  if (m_code.steps.size() == 1 && m_code.steps[0].kind == Kind::Cheap) m_only = m_cheap.data();
}

void WhereMatcher::MakeTables() {
  if (m_code.tables.empty()) return;
  m_verdicts.reset(static_cast<std::uint8_t*>(std::calloc(m_code.tables.size(), kTableBytes)));
  if (!m_verdicts) throw std::bad_alloc();
  std::uint8_t* verdicts = m_verdicts.get();
  for (const WhereTable& table : m_code.tables) {
    m_tables.push_back({verdicts, table.place});
    verdicts += kTableBytes;
  }
}

// The numbers keep their place in memory: the steps point to them.
void WhereMatcher::MakeNumbers() {
  m_numbers.resize(m_code.numbers.size());
  for (std::size_t i = 0; i < m_numbers.size(); ++i) {
    const WhereNumberTest& test = m_code.numbers[i];
    const bool ofTime = test.rule.field == WhereField::Time;
    const std::vector<WhereInterval>& all = ofTime ? m_stamps[i] : test.intervals;
    Number& number = m_numbers[i];
    number = {0, 0, &all, test.place, test.shift, test.rule.negated};
    if (all.size() != 1) continue;
    number.first = all[0].first;
    number.span = all[0].last - all[0].first;
    number.all = nullptr;
  }
}

void WhereMatcher::SetClock(const WhereClock& clock) {
  for (std::size_t i = 0; i < m_stamps.size(); ++i)
    if (m_code.numbers[i].rule.field == WhereField::Time)
      m_stamps[i] = StampIntervals(m_code.numbers[i].rule, clock);
  MakeNumbers();
}

bool WhereMatcher::IsIn(const std::vector<WhereInterval>& intervals, std::uint64_t number) {
  constexpr std::size_t kFew = 4;
  const auto has = [number](const WhereInterval& one) {
    return number - one.first <= one.last - one.first;
  };
  if (intervals.size() <= kFew) return std::any_of(intervals.begin(), intervals.end(), has);
  const auto behind = std::upper_bound(
      intervals.begin(), intervals.end(), number,
      [](std::uint64_t wanted, const WhereInterval& one) { return wanted < one.first; });
  return behind != intervals.begin() && has(*std::prev(behind));
}

void WhereMatcher::NamesMayHaveChanged() {
  for (std::uint8_t* const verdict : m_unnamed) *verdict = 0;
  m_unnamed.clear();
}

void WhereMatcher::Learn(const Cheap& cheap, const std::uint8_t* record) {
  if (m_only) m_names.BeginRecord();
  for (const Table* made = cheap.table; made != cheap.tablesEnd; ++made) {
    const WhereTable& table = m_code.tables[static_cast<std::size_t>(made - m_tables.data())];
    const std::uint16_t number = LoadBe16(record + table.place);
    std::uint8_t& verdict = made->verdicts[number];
    if (verdict & kLearned) continue;
    std::string_view name = "";
    if (table.place != TraceAt::kAttributes) {
      name = m_names.Find(table.place, number);
      if (name.empty()) m_unnamed.push_back(&verdict);
    }
    const std::uint64_t givenUp = m_search.LimitsReached();
    const bool holds = HoldsFor(table.rule, number, name, m_search);
    if (m_search.LimitsReached() != givenUp) m_unnamed.push_back(&verdict);
    verdict = static_cast<std::uint8_t>(kLearned | (holds ? kHolds : 0));
  }
}

bool WhereMatcher::Run(const std::uint8_t* record, const WherePrevious& previous) {
  std::uint32_t at = m_code.entry;
  m_names.BeginRecord();
  while (at < kWhereFails) {
    const WhereStep& step = m_code.steps[at];
    at = StepHolds(step, record, previous) ? step.onTrue : step.onFalse;
  }
  return at == kWherePasses;
}

bool WhereMatcher::StepHolds(const WhereStep& step, const std::uint8_t* record,
                             const WherePrevious& previous) {
  if (step.kind == Kind::Cheap) return CheapHolds(m_cheap[step.index], record);
  if (step.kind == Kind::Delta)
    return DeltaHolds(m_code.deltas[step.index], RawTrace(record), previous);
  const bool asksMark = step.kind == Kind::Marked || step.kind == Kind::Note;
  const WhereMark mark = asksMark && m_marks ? m_marks->Of(record) : WhereMark();
  if (step.kind == Kind::Marked) {
    const WhereNumberTest& test = m_code.marks[step.index];
    return test.rule.negated != IsIn(test.intervals, mark.colour);
  }
  const WhereRule& test = m_code.texts[step.index];
  if (step.kind != Kind::Note)
    return test.negated != TextTestHolds(test, FieldOf(step, record), m_search);
  return test.negated != TextTestHolds(test, {mark.note.data(), mark.note.size()}, m_search);
}

bool WhereMatcher::DeltaHolds(const WhereNumberTest& test, const RawTrace& trace,
                              const WherePrevious& previous) const {
  const bool known = trace.TicCount() != 0 && previous.tic != 0 && trace.PidId() == previous.pid &&
                     trace.MachineId() == previous.machine;
  const auto picoseconds = static_cast<std::int64_t>(trace.TicCount() - previous.tic);
  return test.rule.negated != (known && IsIn(test.intervals, DeltaOrder(picoseconds)));
}
