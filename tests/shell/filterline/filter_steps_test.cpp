#include "shell/filterline/filter_steps.h"

#include <gtest/gtest.h>

#include <random>

namespace {

TEST(FilterSteps, TextsAreWalkedBackAndForth) {
  FilterSteps steps;
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

TEST(FilterSteps, ANewTextDropsThoseThatWereGoneBackFrom) {
  FilterSteps steps;
  steps.Go("verbose");
  steps.Go("stack");
  steps.Back();
  steps.Go("developer");
  EXPECT_FALSE(steps.CanGoForward());
  steps.Back();
  EXPECT_EQ(steps.Text(), "verbose");
}

TEST(FilterSteps, TheSameTextIsNoStepAndKeepsThoseBehindIt) {
  FilterSteps steps;
  steps.Go("");
  EXPECT_FALSE(steps.CanGoBack());
  steps.Go("verbose");
  steps.Back();
  steps.Go("");
  EXPECT_TRUE(steps.CanGoForward());
}

TEST(FilterSteps, TheOldestFallsOutBehindAHundred) {
  FilterSteps steps;
  for (int i = 0; i < 250; ++i) steps.Go("count == " + std::to_string(i));
  std::size_t texts = 1;
  while (steps.Back()) ++texts;
  EXPECT_EQ(texts, kFilterStepsMax);
  EXPECT_EQ(steps.Text(), "count == 150");
}

TEST(FilterSteps, AStepWithATreeHasTheTreeOfItsOtherSide) {
  const auto tree = std::make_shared<const CTraceFilter>();
  const auto changed = std::make_shared<const CTraceFilter>();
  FilterSteps steps;
  steps.Go("verbose");
  steps.Go("verbose", tree);
  steps.Go("stack");
  EXPECT_EQ(steps.Before().tree, nullptr);
  steps.Back();
  EXPECT_EQ(steps.Before().text, "verbose");
  EXPECT_EQ(steps.Before().tree, tree);
  steps.Back(changed);
  EXPECT_EQ(steps.Before().tree, nullptr);
  EXPECT_EQ(steps.Behind().tree, changed);
  steps.Forward(tree);
  EXPECT_EQ(steps.Before().tree, tree);
  EXPECT_EQ(steps.Behind().text, "stack");
}

// Against the rule in its plain form.
TEST(FilterSteps, RandomWalksFollowThePlainRule) {
  std::mt19937 random(4);
  FilterSteps steps;
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
        if (plain.size() > kFilterStepsMax) plain.erase(plain.begin());
        at = plain.size() - 1;
      }
    }
    ASSERT_EQ(steps.Text(), plain[at]);
  }
}

}  // namespace
