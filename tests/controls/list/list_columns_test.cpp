#include "controls/list/list_columns.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <random>

namespace {

const ListOrder kDragged = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 12, 13};
const ListOrder kRepeats = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 13, 14};
const ListOrder kAscending = {0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14};
const ListOrder kNone(15, -1);

TEST(Permutation, OfAPermutationIsItself) {
  EXPECT_EQ(PermutationOf(kDragged, 15), kDragged);
}

TEST(Permutation, OfAnOrderWithRepeatsLosesNoColumn) {
  EXPECT_EQ(PermutationOf(kRepeats, 15),
            (ListOrder{0, 1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 14, 13, 12}));
}

TEST(Permutation, DropsIndexesOutOfRange) {
  EXPECT_EQ(PermutationOf({-1, 15, 1 << 30, 5, 4, 5, -2147483647, 99, 0, 0, 0, 0, 0, 0, 0}, 15),
            (ListOrder{5, 4, 0, 1, 2, 3, 6, 7, 8, 9, 10, 11, 12, 13, 14}));
  EXPECT_EQ(PermutationOf(kNone, 15), kAscending);
}

TEST(Permutation, OfAnythingIsAPermutation) {
  std::mt19937 random(3);
  for (int round = 0; round < 500; ++round) {
    ListOrder order(15);
    for (std::int32_t& entry : order) entry = static_cast<std::int32_t>(random() % 20) - 2;
    ListOrder permutation = PermutationOf(order, 15);
    EXPECT_EQ(PermutationOf(permutation, 15), permutation);
    std::sort(permutation.begin(), permutation.end());
    ASSERT_EQ(permutation, kAscending);
  }
}

}  // namespace
