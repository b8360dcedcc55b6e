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
#include "where/where_program.h"

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
    // Ids alone: no step leads to another one.
    if (m_onlyTables) return TablesHold(*m_onlyTables, record);
    return Run(record, previous);
  }
  // Names that were empty may have got their text.
  void NamesMayHaveChanged();
  // The end has moved, or the zone.
  void SetClock(const WhereClock& clock);
  const WhereProgram& Program() const { return *m_program; }
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
  struct Free {
    void operator()(void* memory) const { std::free(memory); }
  };

  static std::uint8_t Verdict(const Table& table, const std::uint8_t* record) {
    return table.verdicts[LoadBe16(record + table.place)];
  }
  // Traces vary, so the verdicts are combined without a branch for each.
  bool TablesHold(const WhereStep& step, const std::uint8_t* record) {
    const Table* table = m_tables.data() + step.index;
    const Table* const end = table + step.count;
    std::uint8_t all = kLearned | kHolds, any = 0;
    for (; table != end; ++table) {
      const std::uint8_t verdict = Verdict(*table, record);
      all &= verdict;
      any |= verdict;
    }
    if (!(all & kLearned)) [[unlikely]] {
      Learn(step, record);
      return TablesHold(step, record);
    }
    return ((step.kind == WhereStep::Kind::AllTables ? all : any) & kHolds) != 0;
  }
  void Learn(const WhereStep& step, const std::uint8_t* record);
  bool Run(const std::uint8_t* record, const WherePrevious& previous);
  bool Holds(const WhereStep& step, const std::uint8_t* record, const WherePrevious& previous);
  bool NumberHolds(const WhereStep& step, std::uint64_t number, bool known) const;
  bool DeltaHolds(const WhereStep& step, const RawTrace& trace,
                  const WherePrevious& previous) const;

  const WhereProgramPtr m_program;
  const NameMap& m_names;
  const WhereStep* m_onlyTables = nullptr;
  std::unique_ptr<std::uint8_t, Free> m_verdicts;
  std::vector<Table> m_tables;
  std::vector<std::uint8_t*> m_unnamed;              // verdicts on empty names
  std::vector<std::vector<WhereInterval>> m_stamps;  // by the number of the number test
  WhereRegexSearch m_search;
};
