// One walk of a filter text over traces.
//
// Shape    The verdicts on ids are learned at their first sight and kept in a byte per id and
//          table. Nothing is allocated per trace.
// Owner    Shares the program; borrows the names.
// Errors   An id without a name has an empty one, and what was learned of it may be kept: call
//          NamesMayHaveChanged when names may have come. Other names REQUIRE to stay as they are.
//          A search of `matches` that takes too long finds nothing and is counted.
// Threads  One.
#pragma once

#include <cstdlib>
#include <memory>
#include <vector>

#include "records/name_map.h"
#include "where/where_marks.h"
#include "where/where_program.h"
#include "where/where_record_names.h"

// The trace before, for `delta`. In the order of the document or the stream, whatever is shown.
struct WherePrevious {
  WherePrevious() = default;
  explicit WherePrevious(const RawTrace& trace)
      : tic(trace.TicCount()), machine(trace.MachineId()), pid(trace.PidId()) {}

  std::uint64_t tic = 0;  // 0: there is none, or it has none
  NameId machine = 0, pid = 0;
};

class WhereMatcher {
 public:
  WhereMatcher(WhereProgramPtr program, const NameMap& names, const WhereClock& clock = {});

  // Each record must be whole, or MappedFile::kGuardBytes readable bytes must follow its beginning.
  bool Matches(const std::uint8_t* record, const WherePrevious& previous = {}) {
    // Ids and numbers alone: no step leads to another one.
    if (m_only) return CheapHolds(*m_only, record);
    return Run(record, previous);
  }
  // Names that were empty may have got their text.
  void NamesMayHaveChanged();
  // For `marked` and `note`; null: no trace has any. They must not change meanwhile.
  void SetMarks(std::shared_ptr<const WhereMarks> marks) { m_marks = std::move(marks); }
  void SetClock(const WhereClock& clock);  // the end has moved, or the zone
  const WhereProgram& Program() const { return *m_program; }
  // Bounds the searches of `matches`, see WhereRegexSearch. A verdict on a name that was given up
  // is kept until NamesMayHaveChanged.
  void Bound(const WhereBounds& bounds) { m_search.Bound(bounds); }
  void EndSearchesAt(std::uint64_t threadNs) { m_search.EndAt(threadNs); }
  // The searches that were given up.
  std::uint64_t LimitsReached() const { return m_search.LimitsReached(); }

 private:
  // A verdict in a table. 0 is not learned yet, so a table begins as untouched memory.
  static constexpr std::uint8_t kLearned = 1, kHolds = 2;
  static constexpr std::size_t kTableBytes = kNameIds;
  struct Table {
    std::uint8_t* verdicts;
    std::size_t place;
  };
  // The first interval, or all of them if there is not exactly one.
  struct Number {
    std::uint64_t first, span;
    const std::vector<WhereInterval>* all;
    std::uint8_t place, shift;
    bool negated;
  };
  // A step of the code with what this walk knows.
  struct Cheap {
    const Table *table, *tablesEnd;
    const Number *number, *numbersEnd;
    const std::uint8_t* truth;
  };
  struct Free {
    void operator()(void* memory) const { std::free(memory); }
  };

  static bool Holds(const Number& number, const std::uint8_t* record) {
    const std::uint64_t value = LoadBe64(record + number.place) >> number.shift;
    const bool in = number.all ? IsIn(*number.all, value) : value - number.first <= number.span;
    return in != number.negated;
  }
  static bool IsIn(const std::vector<WhereInterval>& intervals, std::uint64_t number);
  // Traces vary, so the answers are combined without a branch for each.
  bool CheapHolds(const Cheap& cheap, const std::uint8_t* record) {
    unsigned known = kLearned, bits = 0, bit = 0;
    for (const Table* table = cheap.table; table != cheap.tablesEnd; ++table, ++bit) {
      const unsigned verdict = table->verdicts[LoadBe16(record + table->place)];
      known &= verdict;
      bits |= verdict >> 1 << bit;
    }
    for (const Number* number = cheap.number; number != cheap.numbersEnd; ++number, ++bit)
      bits |= unsigned{Holds(*number, record)} << bit;
    if (known) [[likely]]
      return cheap.truth[bits] != 0;
    Learn(cheap, record);
    return CheapHolds(cheap, record);
  }
  void MakeTables();
  void MakeNumbers();
  void Learn(const Cheap& cheap, const std::uint8_t* record);
  bool Run(const std::uint8_t* record, const WherePrevious& previous);
  bool StepHolds(const WhereStep& step, const std::uint8_t* record, const WherePrevious& previous);
  bool DeltaHolds(const WhereNumberTest& test, const RawTrace& trace,
                  const WherePrevious& previous) const;

  const WhereProgramPtr m_program;
  const WhereCode& m_code;
  WhereRecordNames m_names;
  const Cheap* m_only = nullptr;
  std::unique_ptr<std::uint8_t, Free> m_verdicts;
  std::vector<Table> m_tables;
  std::vector<Number> m_numbers;
  std::vector<std::vector<WhereInterval>> m_stamps;  // of the tests on Time, by number
  std::vector<Cheap> m_cheap;
  std::vector<std::uint8_t*> m_unnamed;  // verdicts on empty names, and those that were given up
  WhereRegexSearch m_search;
  std::shared_ptr<const WhereMarks> m_marks;
};
