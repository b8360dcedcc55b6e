// The options --severity, --app, --component, --category, --machine, --pid, --tid, --since, --until
// and --invert: which traces a command chooses, by their values.
//
// Shape    Several names of one option are alternatives, several options must all hold. Names are
//          whole, and capitals do not matter. A time counts with --invert as without.
// Owner    ChoiceTest borrows choice and names; the names may grow meanwhile.
// Errors   None: an id without a name has none of the wanted ones.
// Threads  One.
#pragma once

#include <array>
#include <cstdint>
#include <limits>
#include <string>
#include <string_view>
#include <vector>

#include "documents/trace_indexes.h"
#include "records/trace_event.h"

// The fields that an option chooses by a name.
enum class ChoiceField { App, Component, Category, Machine, Pid, Tid };
constexpr std::size_t kChoiceFields = 6;
// "component", as messages have it.
std::string_view WordOf(ChoiceField field);
const IdList& IdsOf(ChoiceField field, const TraceIndexes& seen);

struct TraceChoice {
  static constexpr unsigned kOtherSeverity = 8, kAllSeverities = 15;

  unsigned severities = kAllSeverities;  // bits: 1 Info, 2 Warn, 4 Error, 8 none of these
  std::array<std::vector<std::string>, kChoiceFields> names;
  // Date above time, as MomentKey makes them: since <= trace < until.
  static constexpr std::uint64_t kNever = std::numeric_limits<std::uint64_t>::max();
  std::uint64_t since = 0, until = kNever;
  bool invert = false;

  std::vector<std::string>& Of(ChoiceField field) { return names[static_cast<std::size_t>(field)]; }
  // Does it say anything that --invert could turn around?
  bool HasTests() const;
  // Does every trace pass?
  bool Empty() const { return !HasTests() && since == 0 && until == kNever; }
};

// As in `severities`. Of several the least, as for the filter dialog and the field of a filter
// text.
unsigned SeverityBit(const TraceEvent_i& trace);

// Packed moments in the order of time.
constexpr std::uint64_t MomentKey(std::uint32_t date, std::uint32_t time) {
  return std::uint64_t{date} << 32 | time;
}

class ChoiceTest {
 public:
  ChoiceTest(const TraceChoice& choice, const NameMap& names);

  bool Passes(const TraceEvent_i& trace);
  // Ids mean other names from now on.
  void ForgetIds();
  // "no trace came of the component "Sqll"", for each wanted name that no trace had so far.
  std::vector<std::string> Missing() const;

 private:
  enum Verdict : std::uint8_t { kUnknown, kYes, kNo };
  struct NameTest {
    ChoiceField field;
    const std::vector<std::string>& wanted;
    std::vector<Verdict> known;  // by id
    std::vector<bool> came;      // by the place of the wanted name
  };
  bool TestsPass(const TraceEvent_i& trace);
  bool HasName(NameTest& test, NameId id);

  const TraceChoice& m_choice;
  const NameMap& m_names;
  std::vector<NameTest> m_tests;
};

// Is this the wanted name of such a field? A process of an account has its number alone as well.
bool IsNamed(ChoiceField field, std::string_view name, std::string_view wanted);
// A message about the first wanted name that no trace of a file has; empty: all are there.
std::string MissingName(const TraceChoice& choice, const TraceIndexes& seen, const NameMap& names);
