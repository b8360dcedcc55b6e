// Patterns as values: many at once, beside the one that the application has.
#include "tree/regex/program/regex_program.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <atomic>
#include <memory>
#include <string>
#include <thread>
#include <utility>
#include <vector>

#include "tree/regex/regex.h"

namespace {

constexpr std::int64_t kEnough = 1'000'000;

bool Finds(RegexMatcher& matcher, const RegexPlan& plan, std::string_view text) {
  return matcher.Begin(plan, text, kEnough) == RegexAnswer::Yes;
}

TEST(RegexProgram, OneMatcherRunsManyPatternsInTurn) {
  std::vector<RegexPlan> plans;
  for (const char* const pattern : {"err[a-z]*", "^start", "time=[0-9]+", "x\\{2\\}"})
    plans.emplace_back(RegexProgram::Compile(pattern, {}));
  RegexMatcher matcher;
  const auto found = [&](std::string_view text) {
    std::string which;
    for (const RegexPlan& plan : plans) which += Finds(matcher, plan, text) ? '1' : '0';
    return which;
  };
  EXPECT_EQ(found("an error"), "1000");
  EXPECT_EQ(found("start: time=20"), "0110");
  EXPECT_EQ(found("restart\nstart xx"), "0101");
  EXPECT_EQ(found("nothing"), "0000");
}

TEST(RegexProgram, TheApplicationsPatternStaysAsItIs) {
  ASSERT_EQ(RegexPrepare("\\(ne\\)edle", 0, 0, 0, 0), 1);
  const std::string text = "a needle in the hay";
  ASSERT_EQ(RegexMatchText(text), 1);
  const RegexState_t before = RegexState;
  const RegexPlan plan(RegexProgram::Compile("^\\(h\\)ay\\{1,3\\}", {.ignoreCase = true}));
  RegexMatcher matcher;
  EXPECT_TRUE(Finds(matcher, plan, "HAYYY"));
  EXPECT_EQ(matcher.MatchEnd(), 5u);
  EXPECT_THROW(RegexProgram::Compile("[", {}), std::string);
  EXPECT_EQ(RegexState.matchStart, before.matchStart);
  EXPECT_EQ(RegexState.groupStart[0], before.groupStart[0]);
  EXPECT_EQ(RegexState.groupCount, 1);
  EXPECT_EQ(RegexState.anchored, 0);
  EXPECT_EQ(RegexState.rangeLow, before.rangeLow);
  EXPECT_EQ(RegexState.rangeExtra, before.rangeExtra);
  EXPECT_EQ(RegexMatchText(text), 1);
  EXPECT_EQ(RegexMatchText("HAY"), 0);
}

TEST(RegexState, HasTheCountsOfAPatternThatFailed) {
  ASSERT_EQ(RegexPrepare("a", 0, 0, 0, 0), 1);
  EXPECT_EQ(RegexPrepare("^\\(b\\)\\(c[", 0, 0, 0, 0), 0);
  EXPECT_EQ(RegexState.anchored, 1);
  EXPECT_EQ(RegexState.groupCount, 2);
  EXPECT_EQ(RegexState.closedGroups, 1);
}

TEST(RegexState, HasTheRestOfTheRangeThatWasRunLast) {
  ASSERT_EQ(RegexPrepare("x\\{2,5\\}", 0, 0, 0, 0), 1);
  ASSERT_EQ(RegexMatchText("axxx"), 1);
  EXPECT_EQ(RegexState.rangeLow, 0);
  EXPECT_EQ(RegexState.rangeExtra, 2);
  const std::string text = "xb";
  const char* const begin = text.data();
  EXPECT_EQ(RegexMatchHere(begin, begin, begin + text.size(), RegexState.program, 0), 0);
  EXPECT_EQ(RegexState.rangeLow, 1);
}

TEST(RegexProgram, ItsOptionsAreItsOwn) {
  ASSERT_EQ(RegexPrepare("a", 1, 0, 1, 0), 1);
  RegexMatcher matcher;
  const auto finds = [&](const RegexOptions& options, const char* pattern, std::string_view text) {
    return Finds(matcher, RegexPlan(RegexProgram::Compile(pattern, options)), text);
  };
  EXPECT_FALSE(finds({}, "cart", "A CART"));
  EXPECT_TRUE(finds({.ignoreCase = true}, "cart", "A CART"));
  EXPECT_TRUE(finds({}, "cart", "carts"));
  EXPECT_FALSE(finds({.wordSearch = true}, "cart", "carts"));
  EXPECT_TRUE(finds({.literal = true}, "c.*t", "c.*t"));
  EXPECT_FALSE(finds({.literal = true}, "c.*t", "cart"));
  EXPECT_FALSE(finds({}, "a.b", "a\nb"));
  EXPECT_TRUE(finds({.acrossLines = true}, "a.b", "a\nb"));
}

TEST(RegexProgram, HasTheBytesThatTheApplicationsPatternHas) {
  ASSERT_EQ(RegexPrepare("^ab*\\(c\\)\\1$", 0, 0, 0, 0), 1);
  const RegexProgram program = RegexProgram::Compile("^ab*\\(c\\)\\1$", {});
  EXPECT_TRUE(program.Anchored());
  EXPECT_EQ(program.Code(),
            (std::vector<unsigned char>{8, 'a', 9, 'b', 4, 0, 8, 'c', 32, 0, 36, 0, 24, 28}));
  EXPECT_TRUE(std::equal(program.Code().begin(), program.Code().end(), RegexState.program));
}

TEST(RegexProgram, ACopyAndAMovedPlanOutliveWhatTheyWereMadeFrom) {
  auto first = std::make_unique<RegexProgram>(RegexProgram::Compile("[a-z]*[0-9]", {}));
  const RegexProgram copy = *first;
  auto plan = std::make_unique<RegexPlan>(*first);
  first.reset();
  const RegexPlan moved = std::move(*plan);
  plan.reset();
  RegexMatcher matcher;
  EXPECT_TRUE(Finds(matcher, moved, "abc7"));
  EXPECT_FALSE(Finds(matcher, moved, "abc"));
  EXPECT_TRUE(Finds(matcher, RegexPlan(copy), "abc7"));
}

TEST(RegexProgram, AFurtherMatchAndASearchInPartsAreThoseOfTheirPlan) {
  const RegexPlan words(RegexProgram::Compile("[a-z]+", {}));
  const RegexPlan lines(RegexProgram::Compile("^[a-z]", {}));
  const RegexPlan maybeEmpty(RegexProgram::Compile("b*", {}));
  const std::string text = "ab cd\nef";
  const auto starts = [&](const RegexPlan& plan) {
    RegexMatcher matcher;
    std::string places;
    RegexAnswer answer = matcher.Begin(plan, text, 0);
    while (answer != RegexAnswer::No && places.size() < 50) {
      if (answer == RegexAnswer::Yes) places += std::to_string(matcher.MatchStart()) + " ";
      answer =
          answer == RegexAnswer::Yes ? matcher.Next(plan, text, 0) : matcher.Resume(plan, text, 0);
    }
    return places;
  };
  EXPECT_EQ(starts(words), "0 3 6 ");
  EXPECT_EQ(starts(lines), "0 6 ");
  EXPECT_EQ(starts(maybeEmpty), "0 1 2 3 4 5 6 7 8 ");
}

// A sanitizer for threads sees here whether matching writes anything that is shared.
TEST(RegexProgram, ThreadsShareAPlan) {
  const RegexPlan plan(RegexProgram::Compile("\\(x*\\)y\\{1,3\\}\\1z", {}));
  std::atomic<int> wrong = 0;
  const auto search = [&](const std::string& text, bool expected) {
    RegexMatcher matcher;
    for (int i = 0; i < 2000; ++i)
      if (Finds(matcher, plan, text) != expected) ++wrong;
  };
  std::vector<std::thread> threads;
  for (const auto& [text, expected] : {std::pair<std::string, bool>{"..xxyyxxz", true},
                                       {"xxyyyyxz", false},
                                       {"yz", true},
                                       {"xyxx", false}})
    threads.emplace_back(search, text, expected);
  for (std::thread& thread : threads) thread.join();
  EXPECT_EQ(wrong, 0);
}

}  // namespace
