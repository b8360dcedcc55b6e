// What a filter text is compiled to: steps that jump, and what each of them tests.
//
// Shape    A step leads to a later test, to kWherePasses or to kWhereFails. The tests of one AND or
//          OR stand in the order of their cost. Tests on ids and attributes are tables: a byte for
//          each number that the record can have, and what decides it is asked at first sight of the
//          number. Those of one AND or OR are one step without a branch.
// Threads  Immutable once made: any.
#pragma once

#include <cstdint>
#include <vector>

#include "where/where_clock.h"
#include "where/where_rule.h"

constexpr std::uint32_t kWherePasses = ~std::uint32_t{0}, kWhereFails = kWherePasses - 1;

struct WhereStep {
  enum class Kind : std::uint8_t {
    AllTables,  // `index` is the first, `count` how many
    AnyTable,
    Count,  // number tests
    Tic,
    Line,
    Delta,
    Time,
    Text,  // text tests
    Stack,
  };
  Kind kind = Kind::AllTables;
  std::uint32_t index = 0, count = 1;
  std::uint32_t onTrue = kWherePasses, onFalse = kWhereFails;
};

struct WhereTable {
  std::uint8_t place = 0;  // of the 16-bit number in the record
  WhereRule rule;
};

// first..last, both included; none is empty. A list is sorted, and none overlaps another.
struct WhereInterval {
  std::uint64_t first, last;
};
// Is the number in one of the intervals? Those of Delta are picoseconds as DeltaOrder gives them,
// those of Time are stamps and depend on the clock.
struct WhereNumberTest {
  bool negated = false;
  WhereRule rule;
  std::vector<WhereInterval> intervals;
};

struct WhereCode {
  std::vector<WhereStep> steps;
  std::uint32_t entry = kWherePasses;
  std::vector<WhereTable> tables;
  std::vector<WhereNumberTest> numbers;
  std::vector<WhereRule> texts;
  bool usesDelta = false, usesEnd = false;
};

WhereCode MakeCode(WhereRule rule);

// Signed picoseconds as unsigned numbers of the same order.
inline std::uint64_t DeltaOrder(std::int64_t picoseconds) {
  return static_cast<std::uint64_t>(picoseconds) ^ (std::uint64_t{1} << 63);
}
// The stamps at which the test on Time holds, but for its negation.
std::vector<WhereInterval> StampIntervals(const WhereRule& test, const WhereClock& clock);
