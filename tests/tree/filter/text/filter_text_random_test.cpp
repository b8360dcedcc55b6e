// Random trees as texts and random texts as trees, over random traces: a slow evaluator of the text
// and the marks themselves say the same.
#include <gtest/gtest.h>

#include "tree/filter/text/filter_of_text.h"
#include "tree/filter/text/filter_text.h"
#include "tree/filter/text/filter_world_texts.h"
#include "where/text/where_writer.h"

namespace {

constexpr int kRounds = 6000, kTraces = 40;

std::optional<WhereExpr> Parsed(const std::string& text) {
  WhereError error;
  std::optional<WhereExpr> expr = ParseWhere(text, error);
  EXPECT_TRUE(expr) << text << ": " << error.reason;
  return expr;
}

std::string Described(const PlainTrace& trace) {
  return trace.component + "|" + trace.category + "|" + trace.application + "|" + trace.machine +
         "|" + trace.pid + "|" + trace.tid + "|" + std::to_string(trace.fields.attributes);
}

struct Played {
  int said = 0, refused = 0, hidden = 0, shown = 0;
};

// A tree, its text, and the tree of the text.
void PlayTree(unsigned seed, bool mayGrow, bool hostile, Played& played) {
  FilterWorld world(seed);
  world.MakeNames(hostile);
  const CTraceFilter fresh = world.Fresh(mayGrow);
  CTraceFilter filter = fresh;
  world.Click(filter);
  const FilterNames names{world.Names(), mayGrow};
  std::string why;
  const std::optional<std::string> text = TextOfFilter(filter, names, &why);
  if (!text) {
    EXPECT_TRUE(hostile || why.find("are named") != why.npos) << why;
    ++played.refused;
    return;
  }
  ++played.said;
  std::optional<WhereExpr> expr;
  CTraceFilter again = fresh;
  if (!text->empty()) {
    expr = Parsed(*text);
    ASSERT_EQ(WhereText(*expr), *text);
    WhereError error;
    ASSERT_TRUE(FilterOfText(*expr, names, again, error))
        << *text << "\n"
        << error.reason << " at " << text->substr(error.place, error.length);
    CTraceFilter other = fresh;
    const WhereExpr same = world.Rewritten(*expr);
    ASSERT_TRUE(FilterOfText(same, names, other, error)) << WhereText(same) << error.reason;
    EXPECT_EQ(TextOfFilter(other, names), TextOfFilter(again, names)) << WhereText(same);
  }
  for (int i = 0; i < kTraces; ++i) {
    const PlainTrace trace = world.Trace(fresh, mayGrow);
    const bool shown = FilterWorld::Shows(filter, trace);
    ++(shown ? played.shown : played.hidden);
    ASSERT_EQ(!expr || FilterWorld::Shows(*expr, trace), shown) << *text << "\n"
                                                                << Described(trace);
    ASSERT_EQ(FilterWorld::Shows(again, trace), shown) << *text << "\n" << Described(trace);
  }
}

// A text and, where there is one, its tree.
void PlayText(unsigned seed, bool mayGrow, Played& played) {
  FilterWorld world(seed);
  world.MakeNames(seed % 4 == 0);
  CTraceFilter filter = world.Fresh(mayGrow);
  const CTraceFilter fresh = filter;
  if (seed % 3 == 0) world.Click(filter);
  const CTraceFilter before = filter;
  const WhereExpr expr = world.Text(1 + world.Below(3));
  const FilterNames names{world.Names(), mayGrow};
  WhereError error;
  if (!FilterOfText(expr, names, filter, error)) {
    EXPECT_FALSE(error.reason.empty());
    ++played.refused;
    return;
  }
  ++played.said;
  CTraceFilter pressed = filter;
  world.PressOk(pressed);
  for (int i = 0; i < kTraces; ++i) {
    const PlainTrace trace = world.Trace(fresh, mayGrow);
    const bool shown = FilterWorld::Shows(before, trace) && FilterWorld::Shows(expr, trace);
    ++(shown ? played.shown : played.hidden);
    ASSERT_EQ(FilterWorld::Shows(filter, trace), shown) << WhereText(expr) << "\n"
                                                        << Described(trace);
    ASSERT_EQ(FilterWorld::Shows(pressed, trace), shown) << "after OK: " << WhereText(expr) << "\n"
                                                         << Described(trace);
  }
}

class FilterTextRandom : public testing::TestWithParam<bool> {};

TEST_P(FilterTextRandom, ATreeAndItsTextAndTheTreeOfThatShowTheSameTraces) {
  Played played;
  for (unsigned seed = 0; seed < kRounds && !HasFatalFailure(); ++seed)
    PlayTree(seed, GetParam(), false, played);
  EXPECT_GT(played.said, kRounds * 3 / 4);
  EXPECT_GT(played.hidden, kRounds);
  EXPECT_GT(played.shown, kRounds);
}

TEST_P(FilterTextRandom, NamesThatComeTwiceAreToldApartOrRefused) {
  Played played;
  for (unsigned seed = 0; seed < kRounds && !HasFatalFailure(); ++seed)
    PlayTree(seed, GetParam(), true, played);
  EXPECT_GT(played.said, kRounds / 10);
  EXPECT_GT(played.refused, kRounds / 10);
}

TEST_P(FilterTextRandom, ATextThatOpensAsATreeShowsTheSameTracesAsTheTree) {
  Played played;
  for (unsigned seed = 0; seed < kRounds * 2 && !HasFatalFailure(); ++seed)
    PlayText(seed, GetParam(), played);
  EXPECT_GT(played.said, kRounds / 10);
  EXPECT_GT(played.refused, kRounds / 10);
  EXPECT_GT(played.hidden, kRounds);
  EXPECT_GT(played.shown, kRounds);
}

INSTANTIATE_TEST_SUITE_P(AllNamesAreThereOrMoreMayCome, FilterTextRandom, testing::Bool());

}  // namespace
