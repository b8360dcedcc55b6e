#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <set>

#include "support/filter_text_page.h"
#include "where/text/where_parser.h"
#include "where/text/where_writer.h"

namespace {

void Collect(const WhereExpr& expr, std::set<WhereField>& fields,
             std::set<WhereOperator>& operators) {
  if (expr.kind == WhereExpr::Kind::Test) {
    fields.insert(expr.field);
    operators.insert(expr.op);
  }
  for (const WhereExpr& child : expr.children) Collect(child, fields, operators);
}

TEST(FilterTextPage, EveryExampleCanBeReadAndAllFieldsAndOperatorsHaveOne) {
  const FilterTextPage page = FilterTextPage::Read();
  EXPECT_GE(page.examples.size(), 45U);
  EXPECT_TRUE(page.unknown.empty()) << page.unknown.front()[0];
  std::set<WhereField> fields;
  std::set<WhereOperator> operators;
  for (const auto& example : page.examples) {
    WhereError error;
    const auto expr = ParseWhere(example[0], error);
    ASSERT_TRUE(expr) << example[0] << ": " << error.place << ": " << error.reason;
    Collect(*expr, fields, operators);
    EXPECT_TRUE(ParseWhere(WhereText(*expr), error)) << WhereText(*expr);
    const std::vector<int> rows = FilterTextPage::Numbers(example[1]);
    EXPECT_FALSE(rows.empty()) << example[0];
    EXPECT_TRUE(std::is_sorted(rows.begin(), rows.end())) << example[0];
    EXPECT_LE(static_cast<std::size_t>(rows.back()), page.traces.size()) << example[0];
  }
  EXPECT_EQ(fields.size(), kWhereFields);
  EXPECT_EQ(operators.size(), kWhereOperators);
}

TEST(FilterTextPage, TheTableOfFieldsIsThatOfTheLanguage) {
  const FilterTextPage page = FilterTextPage::Read();
  ASSERT_EQ(page.fields.size(), kWhereFields);
  for (std::size_t i = 0; i < kWhereFields; ++i) {
    const auto field = static_cast<WhereField>(i);
    std::string operators;
    for (const WhereOperator op : OperatorsOf(field))
      if (op != WhereOperator::IsSet)
        operators.append(operators.empty() ? "" : " ").append(WordOf(op));
    EXPECT_EQ(page.fields[i][0], WordOf(field));
    EXPECT_EQ(page.fields[i][2], operators) << page.fields[i][0];
  }
}

TEST(FilterTextPage, EveryErrorHasItsPlaceAndItsReason) {
  const FilterTextPage page = FilterTextPage::Read();
  EXPECT_GE(page.errors.size(), 10U);
  for (const auto& row : page.errors) {
    WhereError error;
    EXPECT_FALSE(ParseWhere(row[0], error)) << row[0];
    EXPECT_THAT(error.reason, testing::HasSubstr(row[2])) << row[0];
    const bool atEnd = error.place == row[0].size() && error.length == 0;
    EXPECT_EQ(atEnd ? "the end" : row[0].substr(error.place, error.length), row[1]) << row[0];
  }
}

}  // namespace
