#include "where/steps/cell_step.h"

#include <gtest/gtest.h>

#include "support/random_where_text.h"
#include "where/text/where_parser.h"
#include "where/text/where_writer.h"

namespace {

using F = WhereField;

TEST(CellStep, ACellGivesItsTest) {
  EXPECT_EQ(OnlyThis(F::Component, "Sql"), "component == Sql");
  EXPECT_EQ(OnlyThis(F::Severity, "Warn"), "severity == warn");
  EXPECT_EQ(OnlyThis(F::Line, "42"), "line == 42");
  EXPECT_EQ(OnlyThis(F::Tid, "7"), "tid == 7");
  EXPECT_EQ(OnlyThis(F::Verbose, ""), "verbose");
  EXPECT_EQ(OnlyThis(F::Text, "retry"), "text == \"retry\"");
  EXPECT_EQ(OnlyThis(F::Time, "2026-11-21T09:41:07.123Z"), "time == 2026-11-21T09:41:07.123Z");
  EXPECT_EQ(HideThis(F::Component, "Sql"), "component != Sql");
  EXPECT_EQ(HideThis(F::Developer, ""), "not developer");
  EXPECT_EQ(HideThis(F::Count, "3"), "count != 3");
}

TEST(CellStep, AProcessOfAnAccountHasTwoTests) {
  EXPECT_EQ(OnlyThis(F::Pid, "4711"), "pid == 4711");
  EXPECT_EQ(OnlyThis(F::Pid, "4711 alice"), "pid == 4711 and account == alice");
  EXPECT_EQ(HideThis(F::Pid, "4711 alice"), "not (pid == 4711 and account == alice)");
  EXPECT_EQ(OnlyThis(F::Pid, "two words"), "pid == \"two words\"");
  EXPECT_EQ(OnlyThis(F::Pid, "10..20"), "pid == \"10..20\"");
}

TEST(CellStep, AValueThatIsNoneOfItsFieldGivesNothing) {
  EXPECT_FALSE(OnlyThis(F::Line, "n/a"));
  EXPECT_FALSE(OnlyThis(F::Line, ""));
  EXPECT_FALSE(HideThis(F::Count, "1 or verbose"));
  EXPECT_FALSE(OnlyThis(F::Severity, "none"));
  EXPECT_FALSE(OnlyThis(F::Delta, "5ms"));
  EXPECT_FALSE(OnlyThis(F::Time, "yesterday"));
}

TEST(CellStep, AThreadIsNamedByMachineProcessAndThread) {
  EXPECT_EQ(OnlyThisThread({"web-1", "812 bob", "7"}),
            "machine == web-1 and pid == 812 and account == bob and tid == 7");
  EXPECT_EQ(OnlyThisThread({"", "a b", "or"}),
            "machine == \"\" and pid == \"a b\" and tid == \"or\"");
}

TEST(CellStep, AroundATraceBothEndsBelongToIt) {
  constexpr std::int64_t kTen = 1'795'255'200'000'000'000;  // 2026-11-21T10:00:00Z
  EXPECT_EQ(OnlyAroundTime(kTen, 5'000'000'000),
            "time >= 2026-11-21T09:59:55.000Z and time <= 2026-11-21T10:00:05.000Z");
  EXPECT_EQ(OnlyAroundTime(kTen, 1500),
            "time >= 2026-11-21T09:59:59.999998500Z and time <= 2026-11-21T10:00:00.000001500Z");
  EXPECT_FALSE(OnlyAroundTime(INT64_MAX, 1)) << "no such year";
  EXPECT_FALSE(OnlyAroundTime(INT64_MIN, 0)) << "no such year";
  EXPECT_EQ(OnlyAroundTic(1000, 10), "tic in {990..1010}");
  EXPECT_EQ(OnlyAroundTic(5, 10), "tic in {0..15}");
  EXPECT_EQ(OnlyAroundTic(UINT64_MAX, 1), "tic in {18446744073709551614..18446744073709551615}");
}

TEST(CellStep, AStepIsAddedWithTheLeastBrackets) {
  EXPECT_EQ(WithStep("", "verbose"), "verbose");
  EXPECT_EQ(WithStep(" \n", "verbose"), "verbose");
  EXPECT_EQ(WithStep("stack", "verbose"), "stack and verbose");
  EXPECT_EQ(WithStep("stack or developer", "verbose"), "(stack or developer) and verbose");
  EXPECT_EQ(WithStep("stack", "pid == 3 and account == bob"),
            "stack and pid == 3 and account == bob");
  EXPECT_EQ(WithStep("stack", "verbose or developer"), "stack and (verbose or developer)");
}

TEST(CellStep, WhatIsInForceIsNotSaidTwice) {
  EXPECT_EQ(WithStep("component==\"Sql\"", "component == Sql"), "component == Sql");
  EXPECT_EQ(WithStep("stack and verbose", "verbose and pid == 3"),
            "stack and verbose and pid == 3");
  EXPECT_EQ(WithStep("stack or verbose", "stack or verbose"), "stack or verbose");
}

TEST(CellStep, ATextThatIsNoneTakesNoStep) {
  EXPECT_FALSE(WithStep("component ==", "verbose"));
  EXPECT_FALSE(WithStep("verbose", "component =="));
  EXPECT_FALSE(WithStep("text == \"" + std::string(kWhereTextMax - 20, 'x') + "\"",
                        "component == a_long_name_of_a_component"));
}

TEST(CellStep, ASpanOfTimeHasBothOfItsEnds) {
  constexpr std::int64_t kMs = 1'000'000, kMoment = 1'795'251'667'123 * kMs;
  EXPECT_EQ(OnlyBetween(kMoment, kMoment + 877 * kMs),
            "time >= 2026-11-21T09:01:07.123Z and time <= 2026-11-21T09:01:08.000Z");
  EXPECT_EQ(OnlyBetween(kMoment, kMoment), OnlyAroundTime(kMoment, 0));
}

// Whatever bytes the names have, a step is one test more, and says exactly this name.
TEST(CellStep, HostileNamesStayNames) {
  std::mt19937 random(5);
  constexpr char kBytes[] = "\" \\or{},()=!\n\xff\x80x0";
  for (int i = 0; i < 5000; ++i) {
    std::string name;
    for (unsigned bytes = random() % 10; bytes > 0; --bytes)
      name.push_back(kBytes[random() % sizeof kBytes]);
    for (const F field : {F::Component, F::Text, F::Tid, F::File}) {
      const auto step = OnlyThis(field, name);
      ASSERT_TRUE(step);
      const auto both = WithStep("verbose", *step);
      ASSERT_TRUE(both) << *step;
      WhereError error;
      const auto expr = ParseWhere(*both, error);
      ASSERT_TRUE(expr) << *both << error.reason;
      ASSERT_EQ(expr->children.size(), 2U) << *both;
      ASSERT_EQ(expr->children[1].values.at(0).text, name) << *both;
    }
  }
}

TEST(CellStep, StepsOnRandomTextsCanBeRead) {
  RandomWhereText random(6);
  for (int i = 0; i < 3000; ++i) {
    const WhereExpr before = random.Tree(3), step = random.Tree(2);
    const auto both = WithStep(WhereText(before), WhereText(step));
    ASSERT_TRUE(both);
    WhereError error;
    const auto expr = ParseWhere(*both, error);
    ASSERT_TRUE(expr) << *both << error.reason;
    ASSERT_EQ(WithStep(*both, WhereText(step)), both) << "a second time changes nothing";
  }
}

}  // namespace
