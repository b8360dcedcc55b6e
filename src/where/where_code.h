// What a filter text is compiled to: steps that jump, and what each of them tests.
//
// Shape    A step leads to another one, to kWherePasses or to kWhereFails. The tests of one AND or
//          OR stand in the order of their cost. Tests on ids and attributes are tables: a byte for
//          each number that the record can have, and what decides it is asked at first sight of the
//          number. Up to eight tables and number tests, however they are joined, are one step
//          without a branch: their answers are the bits of an index into its truth table.
// Threads  Immutable once made: any.
#pragma once

#include <cstdint>
#include <vector>

#include "where/where_clock.h"
#include "where/where_rule.h"

constexpr std::uint32_t kWherePasses = ~std::uint32_t{0}, kWhereFails = kWherePasses - 1;

struct WhereStep {
  enum class Kind : std::uint8_t {
    Cheap,  // `index` in `cheap`
    Delta,  // in `deltas`
    Text,   // in `texts`
    Stack,
    Marked,  // in `marks`
    Note,    // in `texts`
  };
  Kind kind = Kind::Cheap;
  std::uint32_t index = 0;
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
// Is the number in one of the intervals? A number that stands for none is in none of them. Those of
// a Delta are picoseconds as DeltaOrder gives them; those of a Time are stamps, depend on the clock
// and are not kept here. The numbers of a record are the upper bits of eight bytes.
struct WhereNumberTest {
  std::uint8_t place = 0, shift = 0;
  WhereRule rule;
  std::vector<WhereInterval> intervals;
};
struct WhereCheap {
  static constexpr std::size_t kBitsMax = 8;
  // Their answers are the lowest bits of the index, those of the numbers come behind them.
  std::uint32_t firstTable = 0, tables = 0, firstNumber = 0, numbers = 0;
  std::vector<std::uint8_t> truth;
};

struct WhereCode {
  std::vector<WhereStep> steps;
  std::uint32_t entry = kWherePasses;
  std::vector<WhereCheap> cheap;
  std::vector<WhereTable> tables;
  std::vector<WhereNumberTest> numbers;
  std::vector<WhereNumberTest> deltas;
  std::vector<WhereNumberTest> marks;
  std::vector<WhereRule> texts;
  bool usesEnd = false;
  bool usesMarks = false;  // or notes
};

WhereCode MakeCode(WhereRule rule);

// Signed picoseconds as unsigned numbers of the same order.
inline std::uint64_t DeltaOrder(std::int64_t picoseconds) {
  return static_cast<std::uint64_t>(picoseconds) ^ (std::uint64_t{1} << 63);
}
// The stamps at which the test on Time holds, but for its negation.
std::vector<WhereInterval> StampIntervals(const WhereRule& test, const WhereClock& clock);
