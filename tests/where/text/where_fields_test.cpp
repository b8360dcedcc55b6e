#include "where/text/where_fields.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "where/text/where_expr.h"

namespace {

TEST(WhereFields, EveryFieldIsFoundByItsWordInAnyCapitals) {
  ASSERT_EQ(WhereFieldWords().size(), kWhereFields);
  for (std::size_t i = 0; i < kWhereFields; ++i) {
    const auto field = static_cast<WhereField>(i);
    std::string word(WordOf(field));
    EXPECT_EQ(word, WhereFieldWords()[i]);
    word.front() = static_cast<char>(word.front() - 'a' + 'A');
    ASSERT_NE(FieldOfWord(word), nullptr) << word;
    EXPECT_EQ(FieldOfWord(word)->field, field) << word;
    EXPECT_FALSE(OperatorsOf(field).empty()) << word;
  }
  EXPECT_EQ(FieldOfWord("components"), nullptr);
  EXPECT_EQ(FieldOfWord(""), nullptr);
}

TEST(WhereFields, AFieldTakesTheOperatorsThatMakeSenseForIt) {
  EXPECT_THAT(OperatorsOf(WhereField::Verbose), testing::ElementsAre(WhereOperator::IsSet));
  EXPECT_FALSE(TakesOperator(WhereField::Text, WhereOperator::Less));
  EXPECT_FALSE(TakesOperator(WhereField::Line, WhereOperator::Contains));
  EXPECT_TRUE(TakesOperator(WhereField::Stack, WhereOperator::IsSet));
  EXPECT_FALSE(TakesOperator(WhereField::Text, WhereOperator::IsSet));
  EXPECT_TRUE(TakesOperator(WhereField::Pid, WhereOperator::Contains));
  EXPECT_FALSE(TakesOperator(WhereField::Time, WhereOperator::In));
}

WhereExpr Flag(WhereField field) {
  WhereExpr test;
  test.field = field;
  return test;
}

TEST(WhereExpr, JoinsFlattenAndTwoNegationsAreNone) {
  const WhereExpr verbose = Flag(WhereField::Verbose), stack = Flag(WhereField::Stack);
  const WhereExpr both = WhereAll({verbose, stack});
  EXPECT_EQ(both.children.size(), 2U);
  EXPECT_EQ(WhereAll({both, verbose}).children.size(), 3U);
  EXPECT_EQ(WhereAny({both, verbose}).children.size(), 2U);
  EXPECT_TRUE(WhereAny({both}) == both);
  EXPECT_TRUE(WhereNot(WhereNot(both)) == both);
  EXPECT_FALSE(WhereNot(both) == both);
}

TEST(WhereExpr, PlacesDoNotCountInAComparison) {
  WhereExpr one = Flag(WhereField::Verbose), other = one;
  other.place = 7;
  other.length = 3;
  EXPECT_TRUE(one == other);
  other.field = WhereField::Stack;
  EXPECT_FALSE(one == other);
}

}  // namespace
