#include "where/steps/where_steps.h"

#include <gtest/gtest.h>

#include <random>

namespace {

TEST(WhereSteps, TextsAreWalkedBackAndForth) {
  WhereSteps steps;
  EXPECT_EQ(steps.Text(), "");
  EXPECT_FALSE(steps.Back());
  steps.Go("verbose");
  steps.Go("stack");
  EXPECT_FALSE(steps.Forward());
  EXPECT_TRUE(steps.Back());
  EXPECT_EQ(steps.Text(), "verbose");
  EXPECT_TRUE(steps.Back());
  EXPECT_EQ(steps.Text(), "");
  EXPECT_FALSE(steps.CanGoBack());
  EXPECT_TRUE(steps.Forward());
  EXPECT_EQ(steps.Text(), "verbose");
}

TEST(WhereSteps, ANewTextDropsThoseThatWereGoneBackFrom) {
  WhereSteps steps;
  steps.Go("verbose");
  steps.Go("stack");
  steps.Back();
  steps.Go("developer");
  EXPECT_FALSE(steps.CanGoForward());
  steps.Back();
  EXPECT_EQ(steps.Text(), "verbose");
}

TEST(WhereSteps, TheSameTextIsNoStepAndKeepsThoseBehindIt) {
  WhereSteps steps;
  steps.Go("");
  EXPECT_FALSE(steps.CanGoBack());
  steps.Go("verbose");
  steps.Back();
  steps.Go("");
  EXPECT_TRUE(steps.CanGoForward());
}

TEST(WhereSteps, TheOldestFallsOutBehindAHundred) {
  WhereSteps steps;
  for (int i = 0; i < 250; ++i) steps.Go("count == " + std::to_string(i));
  std::size_t texts = 1;
  while (steps.Back()) ++texts;
  EXPECT_EQ(texts, kWhereStepsMax);
  EXPECT_EQ(steps.Text(), "count == 150");
}

// Against the rule in its plain form.
TEST(WhereSteps, RandomWalksFollowThePlainRule) {
  std::mt19937 random(4);
  WhereSteps steps;
  std::vector<std::string> plain{""};
  std::size_t at = 0;
  for (int i = 0; i < 20'000; ++i) {
    const unsigned what = random() % 5;
    if (what < 2) {
      ASSERT_EQ(steps.Back(), at > 0);
      if (at > 0) --at;
    } else if (what == 2) {
      ASSERT_EQ(steps.Forward(), at + 1 < plain.size());
      if (at + 1 < plain.size()) ++at;
    } else {
      const std::string text = std::to_string(random() % 4);
      steps.Go(text);
      if (text != plain[at]) {
        plain.erase(plain.begin() + static_cast<std::ptrdiff_t>(at) + 1, plain.end());
        plain.push_back(text);
        if (plain.size() > kWhereStepsMax) plain.erase(plain.begin());
        at = plain.size() - 1;
      }
    }
    ASSERT_EQ(steps.Text(), plain[at]);
  }
}

}  // namespace
