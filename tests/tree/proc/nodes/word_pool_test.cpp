// The storage of child lists: runs of words that go round.
#include <gtest/gtest.h>

#include <algorithm>
#include <vector>

#include "tree/proc/nodes/word_pool.h"

namespace {

constexpr unsigned kOwnPages = 18;  // runs of 2 MiB

void Write(std::uintptr_t* words, unsigned bits, std::uintptr_t value) {
  std::fill_n(words, std::size_t{1} << bits, value);
}
bool Holds(const std::uintptr_t* words, unsigned bits, std::uintptr_t value) {
  return std::all_of(words, words + (std::size_t{1} << bits),
                     [value](std::uintptr_t word) { return word == value; });
}

TEST(WordPool, RunsOfAllLengthsLieApart) {
  WordPool pool;
  std::vector<std::uintptr_t*> runs;
  for (int turn = 0; turn < 3; ++turn)
    for (unsigned bits = 2; bits <= kOwnPages + 1; ++bits) {
      runs.push_back(pool.Take(bits));
      Write(runs.back(), bits, runs.size());
    }
  for (std::size_t i = 0; i < runs.size(); ++i)
    EXPECT_TRUE(Holds(runs[i], 2 + static_cast<unsigned>(i % kOwnPages), i + 1)) << i;
}

TEST(WordPool, ARunGivenBackIsTheNextOneOfItsLength) {
  WordPool pool;
  std::uintptr_t* const first = pool.Take(4);
  std::uintptr_t* const second = pool.Take(4);
  pool.GiveBack(first, 4);
  pool.GiveBack(second, 4);
  EXPECT_NE(pool.Take(5), second) << "another length";
  EXPECT_EQ(pool.Take(4), second);
  EXPECT_EQ(pool.Take(4), first);
}

TEST(WordPool, ARunWithPagesOfItsOwnGoesBackWithoutItsNeighbours) {
  WordPool pool;
  std::uintptr_t* const first = pool.Take(kOwnPages);
  std::uintptr_t* const second = pool.Take(kOwnPages + 1);
  Write(second, kOwnPages + 1, 7);
  pool.GiveBack(first, kOwnPages);
  EXPECT_TRUE(Holds(second, kOwnPages + 1, 7));
  pool.GiveBack(second, kOwnPages + 1);
}

TEST(WordPool, AfterAClearItServesAgainAndGivesNoRunTwice) {
  WordPool pool;
  pool.GiveBack(pool.Take(3), 3);
  pool.Take(kOwnPages);
  pool.Clear();
  std::uintptr_t* const one = pool.Take(3);
  std::uintptr_t* const two = pool.Take(3);
  Write(one, 3, 1);
  Write(two, 3, 2);
  EXPECT_TRUE(Holds(one, 3, 1));
}

}  // namespace
