#include "where/text/where_writer.h"

#include <gtest/gtest.h>

#include "base/text.h"
#include "support/random_where_text.h"
#include "where/text/where_parser.h"

namespace {

// The text in its normal form, or what is wrong with it.
std::string Normal(std::string_view text) {
  WhereError error;
  const auto expr = ParseWhere(text, error);
  return expr ? WhereText(*expr) : "at " + std::to_string(error.place) + ": " + error.reason;
}

TEST(WhereWriter, RandomTreesComeBackFromTheirTexts) {
  RandomWhereText random(1);
  for (int i = 0; i < 20'000; ++i) {
    const WhereExpr tree = random.Tree(i % 5);
    const std::string text = WhereText(tree);
    WhereError error;
    const auto read = ParseWhere(text, error);
    ASSERT_TRUE(read) << text << "\n" << error.place << ": " << error.reason;
    ASSERT_TRUE(*read == tree) << text << "\n" << WhereText(*read);
    ASSERT_EQ(WhereText(*read), text);
    ASSERT_TRUE(IsUtf8(text)) << text;
    ASSERT_EQ(text.find_first_of("\n\r\t\x7f"), text.npos) << text;
  }
}

TEST(WhereWriter, BracketsStandOnlyWhereTheyAreNeeded) {
  EXPECT_EQ(Normal("((verbose))"), "verbose");
  EXPECT_EQ(Normal("(verbose and stack) and developer"), "verbose and stack and developer");
  EXPECT_EQ(Normal("(verbose and stack) or developer"), "verbose and stack or developer");
  EXPECT_EQ(Normal("verbose and (stack or developer)"), "verbose and (stack or developer)");
  EXPECT_EQ(Normal("not (verbose)"), "not verbose");
  EXPECT_EQ(Normal("!(verbose && stack)"), "not (verbose and stack)");
  EXPECT_EQ(Normal("not not verbose"), "verbose");
  EXPECT_EQ(Normal("not verbose and stack"), "not verbose and stack");
}

TEST(WhereWriter, TheNormalFormIsPleasantToRead) {
  EXPECT_EQ(Normal("SEVERITY>=Warning&&COMPONENT  IN{Sql,\"Cache\"}"),
            "severity >= warn and component in {Sql, Cache}");
  EXPECT_EQ(Normal("not component in {Net}"), "component not in {Net}");
  EXPECT_EQ(Normal("component not in {Net}"), "component not in {Net}");
  EXPECT_EQ(Normal("not (component not in {Net})"), "component in {Net}");
  EXPECT_EQ(Normal("text not contains retry"), "not text contains \"retry\"");
  EXPECT_EQ(Normal("text!~\"a|b\""), "not text matches \"a|b\"");
  EXPECT_EQ(Normal("count in {0x10..32, 7..7}"), "count in {16..32, 7}");
  EXPECT_EQ(Normal("delta > 60s or delta > 1.5ms or delta == 0ns or delta < -90s"),
            "delta > 1m or delta > 1500us or delta == 0s or delta < -90s");
  EXPECT_EQ(Normal("time > end-300s and time<END and time < end +1h"),
            "time > end - 5m and time < end and time < end + 1h");
  EXPECT_EQ(Normal("time == 2026-11-21 and time < 2026-11-21 09:41"),
            "time == 2026-11-21 and time < 2026-11-21T09:41");
  EXPECT_EQ(Normal("time >= 2026-11-21T00:30:07.120+01:00"), "time >= 2026-11-20T23:30:07.120Z");
  EXPECT_EQ(Normal("pid in {4711, worker, 10..20, \"10..20\", 0x1f}"),
            "pid in {4711, worker, 10..20, \"10..20\", 0x1f}");
}

TEST(WhereWriter, HostileNamesAreWrittenInOneLineOfText) {
  EXPECT_EQ(WhereQuoted("Sql"), "Sql");
  EXPECT_EQ(WhereQuoted("and"), "\"and\"");
  EXPECT_EQ(WhereQuoted(""), "\"\"");
  EXPECT_EQ(WhereQuoted("two words"), "\"two words\"");
  EXPECT_EQ(WhereQuoted("a\"b\\c"), "\"a\\\"b\\\\c\"");
  EXPECT_EQ(WhereQuoted(std::string_view("\0\n\x7f\xff", 4)), "\"\\x00\\n\\x7f\\xff\"");
  EXPECT_EQ(WhereQuoted("\xe2\x80\xaegpj"), "\"\\xe2\\x80\\xaegpj\"") << "turns the direction";
  EXPECT_EQ(WhereQuoted("Größe"), "\"Größe\"");
}

TEST(WhereWriter, APatternKeepsItsBackslashes) {
  WhereError error;
  const auto expr = ParseWhere(R"(text matches "\d+ \"x\" \\")", error);
  ASSERT_TRUE(expr) << error.reason;
  EXPECT_EQ(expr->values.at(0).text, R"(\d+ \"x\" \\)");
  EXPECT_EQ(WhereText(*expr), R"(text matches "\d+ \"x\" \\")");
}

// Patterns that no text gives, only a program.
TEST(WhereWriter, APatternOfAProgramIsWrittenSoThatItParses) {
  for (const char* pattern : {"a\"b", "\\", "a\nb", "\xff", "\\\n", "\\\\\\"}) {
    WhereExpr test;
    test.field = WhereField::Text;
    test.op = WhereOperator::Matches;
    test.values.emplace_back().text = pattern;
    WhereError error;
    EXPECT_TRUE(ParseWhere(WhereText(test), error)) << WhereText(test) << ": " << error.reason;
  }
}

}  // namespace
