#include "where/hits/where_hits.h"

#include <gtest/gtest.h>

namespace {

// The text with its hits in brackets.
std::string Marked(std::string text, const std::vector<HitRange>& hits) {
  for (std::size_t i = hits.size(); i-- > 0;) {
    text.insert(hits[i].end, "]");
    text.insert(hits[i].begin, "[");
  }
  return text;
}

std::string Hits(const char* filter, const std::string& text) {
  WhereError error;
  WhereHits hits(WhereProgram::Compile(filter, error));
  EXPECT_TRUE(hits.Program()) << error.reason;
  return Marked(text, hits.In(text));
}

TEST(WhereHits, APartIsFoundEachTimeWithItsCapitals) {
  EXPECT_EQ(Hits("text contains \"order\"", "order 1, Order 2, order 3"),
            "[order] 1, Order 2, [order] 3");
  EXPECT_EQ(Hits("text contains \"aa\"", "aaaaa"), "[aaaa]a");
}

TEST(WhereHits, ABeginningIsFoundOnlyThere) {
  EXPECT_EQ(Hits("text startswith \"order\"", "order 1, order 2"), "[order] 1, order 2");
  EXPECT_EQ(Hits("text startswith \"order\"", "an order"), "an order");
}

TEST(WhereHits, AnExpressionIsFoundEachTime) {
  EXPECT_EQ(Hits("text matches \"[0-9]+|cart\"", "cart 17 of 4"), "[cart] [17] of [4]");
  EXPECT_EQ(Hits("text ~ \"(?i)CART\"", "a cart"), "a [cart]");
  EXPECT_EQ(Hits("text ~ \"x*\"", "axxb"), "a[xx]b") << "an empty match is none";
  EXPECT_EQ(Hits("text ~ \"(?<=a)b\"", "ab b"), "a[b] b");
  EXPECT_EQ(Hits("text ~ \"\\b.\"", "\xC3\xA4h \xC3\xB6l"), "[\xC3\xA4]h[ \xC3\xB6]l");
}

TEST(WhereHits, CharactersAreNotCutAndMalformedTextsAreSearchedByBytes) {
  EXPECT_EQ(Hits("text ~ \"()\"", "\xC3\xA4\xC3\xB6"), "\xC3\xA4\xC3\xB6");
  EXPECT_EQ(Hits("text ~ \"b\"",
                 "\xFF"
                 "ab"),
            "\xFF"
            "a[b]");
}

TEST(WhereHits, WhatIsNegatedOrOfAnotherFieldIsNotTinted) {
  EXPECT_EQ(Hits("not text contains \"order\"", "no order"), "no order");
  EXPECT_EQ(
      Hits("text contains \"a\" and not (text contains \"b\" or component contains \"c\")", "abc"),
      "[a]bc");
  EXPECT_EQ(Hits("component contains \"order\" or file ~ \"order\" or stack contains \"order\"",
                 "no order"),
            "no order");
}

TEST(WhereHits, OverlappingHitsOfSeveralTestsAreOne) {
  EXPECT_EQ(Hits("text contains \"abc\" or text contains \"bcd\" and text ~ \"f\"", "abcdef"),
            "[abcd]e[f]");
}

TEST(WhereHits, WithoutATextThereAreNone) {
  WhereHits none(nullptr);
  EXPECT_TRUE(none.In("order").empty());
}

TEST(WhereHits, ThereAreAtMostSoMany) {
  WhereError error;
  WhereHits hits(WhereProgram::Compile("text contains \"a\"", error));
  std::string text;
  for (int i = 0; i < 2000; ++i) text += "a ";
  EXPECT_EQ(hits.In(text).size(), WhereHits::kHitsMax);
}

// Each place may take all its steps.
TEST(WhereHits, AnExpressionThatTriesAllWaysEnds) {
  WhereError error;
  WhereHits hits(WhereProgram::Compile("text ~ \"(a+)+b\"", error));
  EXPECT_TRUE(hits.In(std::string(60'000, 'a')).empty());
}

TEST(JoinedHits, ThoseOfTwoSearchesAreInOrder) {
  const std::vector<HitRange> joined = JoinedHits({{4, 6}, {10, 12}}, {{0, 1}, {5, 9}, {12, 13}});
  EXPECT_EQ(joined, (std::vector<HitRange>{{0, 1}, {4, 9}, {10, 13}}));
}

}  // namespace
