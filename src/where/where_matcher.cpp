#include "where/where_matcher.h"

#include <algorithm>
#include <cstring>
#include <iterator>
#include <new>

namespace {

using Kind = WhereStep::Kind;

bool IsIn(const std::vector<WhereInterval>& intervals, std::uint64_t number) {
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
  if (test.op == WhereOperator::IsSet) return !field.UpToItsNul().empty();
  if (test.op == WhereOperator::Contains) return field.Contains(test.values.front().text);
  return TextHolds(test, field.UpToItsNul(), search);
}

}  // namespace

WhereMatcher::WhereMatcher(WhereProgramPtr program, const NameMap& names, const WhereClock& clock)
    : m_program(std::move(program)), m_names(names), m_stamps(m_program->Code().numbers.size()) {
  const WhereCode& code = m_program->Code();
  if (!code.tables.empty()) {
    m_verdicts.reset(static_cast<std::uint8_t*>(std::calloc(code.tables.size(), kTableBytes)));
    if (!m_verdicts) throw std::bad_alloc();
  }
  std::uint8_t* verdicts = m_verdicts.get();
  for (const WhereTable& table : code.tables) {
    m_tables.push_back({verdicts, table.place});
    verdicts += kTableBytes;
  }
  if (code.steps.size() == 1 && code.texts.empty() && code.numbers.empty())
    m_onlyTables = &code.steps.front();
  SetClock(clock);
}

void WhereMatcher::SetClock(const WhereClock& clock) {
  const std::vector<WhereNumberTest>& numbers = m_program->Code().numbers;
  for (std::size_t i = 0; i < numbers.size(); ++i)
    if (numbers[i].rule.field == WhereField::Time)
      m_stamps[i] = StampIntervals(numbers[i].rule, clock);
}

void WhereMatcher::NamesMayHaveChanged() {
  for (std::uint8_t* const verdict : m_unnamed) *verdict = 0;
  m_unnamed.clear();
}

void WhereMatcher::Learn(const WhereStep& step, const std::uint8_t* record) {
  for (std::uint32_t i = step.index; i < step.index + step.count; ++i) {
    const WhereTable& table = m_program->Code().tables[i];
    const std::uint16_t number = LoadBe16(record + table.place);
    std::uint8_t& verdict = m_tables[i].verdicts[number];
    if (verdict & kLearned) continue;
    std::string_view name = "";
    if (table.place != TraceAt::kAttributes) {
      const auto entry = m_names.find(number);
      if (entry != m_names.end()) name = entry->second.name;
      if (name.empty()) m_unnamed.push_back(&verdict);
    }
    const bool holds = HoldsFor(table.rule, number, name, m_search);
    verdict = static_cast<std::uint8_t>(kLearned | (holds ? kHolds : 0));
  }
}

bool WhereMatcher::Run(const std::uint8_t* record, const WherePrevious& previous) {
  const WhereCode& code = m_program->Code();
  std::uint32_t at = code.entry;
  while (at < kWhereFails) {
    const WhereStep& step = code.steps[at];
    at = Holds(step, record, previous) ? step.onTrue : step.onFalse;
  }
  return at == kWherePasses;
}

bool WhereMatcher::Holds(const WhereStep& step, const std::uint8_t* record,
                         const WherePrevious& previous) {
  const RawTrace trace(record);
  switch (step.kind) {
    case Kind::AllTables:
    case Kind::AnyTable:
      return TablesHold(step, record);
    case Kind::Count:
      return NumberHolds(step, trace.SequenceNumber(), trace.SequenceNumber() != kNoSequenceNumber);
    case Kind::Tic:
      return NumberHolds(step, trace.TicCount(), trace.TicCount() != 0);
    case Kind::Line:
      return NumberHolds(step, trace.SourceLine(), true);
    case Kind::Delta:
      return DeltaHolds(step, trace, previous);
    case Kind::Time:
      return m_program->Code().numbers[step.index].negated !=
             IsIn(m_stamps[step.index], StampOf(trace));
    case Kind::Text:
    case Kind::Stack:
      break;
  }
  const WhereRule& test = m_program->Code().texts[step.index];
  return test.negated != TextTestHolds(test, FieldOf(step, record), m_search);
}

bool WhereMatcher::NumberHolds(const WhereStep& step, std::uint64_t number, bool known) const {
  const WhereNumberTest& test = m_program->Code().numbers[step.index];
  return test.negated != (known && IsIn(test.intervals, number));
}

bool WhereMatcher::DeltaHolds(const WhereStep& step, const RawTrace& trace,
                              const WherePrevious& previous) const {
  const bool known = trace.TicCount() != 0 && previous.tic != 0 && trace.PidId() == previous.pid &&
                     trace.MachineId() == previous.machine;
  const auto picoseconds = static_cast<std::int64_t>(trace.TicCount() - previous.tic);
  return NumberHolds(step, DeltaOrder(picoseconds), known);
}
