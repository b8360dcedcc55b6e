// How many rows the siblings before a given one take: sums over groups of 64, 4,096 and 262,144
// consecutive numbers, so that neither a sum nor a search reads many of them.
//
// Shape    Numbers only grow: a sibling keeps the number that it got when it was appended.
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
  // The first number of the group of 64 with this row; `row` becomes the row within the group.
  // REQUIRES: 0 <= row < sum of all.
  std::uint64_t GroupWith(std::int64_t& row) const;
  // Forgets groups that are wholly before `number`. REQUIRES: they have no rows.
  void DropBefore(std::uint64_t number);

 private:
  struct Level {
    std::uint64_t base = 0;  // number of sums[0]
    std::deque<std::int64_t> sums;
  };
  std::array<Level, 3> m_levels;  // by 64, 4,096, 262,144
};
