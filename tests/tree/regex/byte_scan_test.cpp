// The wide search for two bytes, beside a loop.
#include "tree/regex/plan/byte_scan.h"

#include <gtest/gtest.h>

#include <random>
#include <string>

namespace {

TEST(ByteScan, FindsInLongTextsWhatALoopFindsWhateverTheTestsAre) {
  std::mt19937 random(8);
  const ByteTest tests[] = {{0, 'a', 0}, {0, 'b', 0}, {0, 'a', 1}, {0x20, 'a', 0}, {0x20, 'b', 2}};
  int found = 0;
  for (int round = 0; round < 4000; ++round) {
    std::string text(1000 + random() % 1500, 'x');
    for (std::size_t i = random() % 6; i > 0; --i)
      text[random() % text.size()] = "abcABC"[random() % 6];
    PairTest pair;
    pair.first = WideTest(tests[random() % std::size(tests)]);
    pair.second = WideTest(tests[random() % std::size(tests)]);
    pair.firstAt = random() % 3;
    pair.secondAt = random() % 3;
    if (pair.firstAt == pair.secondAt) pair.second = pair.first;
    if (random() % 2) {  // a pair that may lie together
      const std::size_t at = random() % (text.size() - 3);
      text[at + pair.firstAt] = "abcAB"[random() % 5];
      text[at + pair.secondAt] = "abcAB"[random() % 5];
    }
    const std::size_t limit = text.size() - 2, from = random() % 200;
    std::size_t expected = from;
    const auto holds = [&text](const WideTest& test, std::size_t at) {
      return test.test.Takes(static_cast<unsigned char>(text[at]));
    };
    while (expected < limit && !(holds(pair.first, expected + pair.firstAt) &&
                                 holds(pair.second, expected + pair.secondAt)))
      ++expected;
    if (expected == limit) expected = kNowhere;
    ASSERT_EQ(FindPair(text, from, limit, pair), expected) << round;
    found += expected == kNowhere ? 0 : 1;
  }
  EXPECT_GT(found, 400);
  EXPECT_LT(found, 3600);
}

}  // namespace
