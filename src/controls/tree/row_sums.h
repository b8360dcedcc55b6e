// How many rows the siblings before a place take: sums over groups of 64, 4,096 and 262,144
// consecutive numbers, so that neither a sum nor a search reads many of them.
//
// Shape    Numbers only grow: a sibling keeps the one that it got when it was appended.
// Errors   std::bad_alloc.
#pragma once

#include <array>
#include <cstdint>
#include <deque>

class RowSums {
 public:
  static constexpr unsigned kGroupBits = 6;

  void Add(std::uint64_t number, std::int64_t rows);
  // The rows of all groups of 64 before the one of `number`.
  std::int64_t BeforeGroupOf(std::uint64_t number) const;
  // The first number of the group of 64 that holds the row; `row` becomes what is left of it there.
  // REQUIRES: 0 <= row < sum of all.
  std::uint64_t GroupWith(std::int64_t& row) const;
  // Forgets groups that lie whole before `number`. REQUIRES: they have no rows.
  void DropBefore(std::uint64_t number);

 private:
  struct Level {
    std::uint64_t base = 0;  // number of sums[0]
    std::deque<std::int64_t> sums;
  };
  std::array<Level, 3> m_levels;  // by 64, 4,096, 262,144
};
