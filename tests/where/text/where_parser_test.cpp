#include "where/text/where_parser.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/random_where_text.h"
#include "where/text/where_next.h"
#include "where/text/where_writer.h"

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

WhereExpr Parsed(std::string_view text) {
  WhereError error;
  const auto expr = ParseWhere(text, error);
  EXPECT_TRUE(expr) << text << ": " << error.place << ": " << error.reason;
  return expr.value_or(WhereExpr());
}

WhereValue ValueOf(std::string_view text) {
  const WhereExpr test = Parsed(text);
  return test.values.size() == 1 ? test.values[0] : WhereValue();
}

TEST(WhereParser, ReadsTheTextOfTheFirstExample) {
  const WhereExpr expr = Parsed(
      "severity >= warn and component in {Sql, \"Cache\"} and not text contains \"retry\" and text "
      "matches \"order [0-9]+|cart\"");
  ASSERT_EQ(expr.kind, WhereExpr::Kind::And);
  ASSERT_EQ(expr.children.size(), 4U);
  EXPECT_EQ(expr.children[0].op, WhereOperator::GreaterEqual);
  EXPECT_EQ(expr.children[0].values.at(0).severity, WhereSeverity::Warn);
  EXPECT_EQ(expr.children[1].values.at(1).text, "Cache");
  EXPECT_EQ(expr.children[2].kind, WhereExpr::Kind::Not);
  EXPECT_EQ(expr.children[2].children.at(0).op, WhereOperator::Contains);
  EXPECT_EQ(expr.children[3].values.at(0).text, "order [0-9]+|cart");
}

TEST(WhereParser, NotBindsBeforeAndBindsBeforeOr) {
  const WhereExpr expr = Parsed("not verbose and stack or developer");
  ASSERT_EQ(expr.kind, WhereExpr::Kind::Or);
  ASSERT_EQ(expr.children[0].kind, WhereExpr::Kind::And);
  EXPECT_EQ(expr.children[0].children[0].kind, WhereExpr::Kind::Not);
}

TEST(WhereParser, PlacesAreThoseOfTheText) {
  const std::string text = "verbose or not (pid == 12 and  component in {a,\"b c\"})";
  const WhereExpr expr = Parsed(text);
  const auto part = [&](const auto& at) { return text.substr(at.place, at.length); };
  EXPECT_EQ(part(expr), text);
  const WhereExpr& negated = expr.children.at(1);
  EXPECT_EQ(part(negated), "not (pid == 12 and  component in {a,\"b c\"})");
  const WhereExpr& in = negated.children.at(0).children.at(1);
  EXPECT_EQ(part(in), "component in {a,\"b c\"}");
  EXPECT_EQ(part(in.values.at(1)), "\"b c\"");
}

TEST(WhereParser, ReadsNumbersInBothForms) {
  EXPECT_EQ(ValueOf("count == 0x1F").from, 31U);
  EXPECT_EQ(ValueOf("tic >= 18446744073709551615").to, 18446744073709551615U);
  const WhereValue range = ValueOf("line in {10..0x14}");
  EXPECT_EQ(range.from, 10U);
  EXPECT_EQ(range.to, 20U);
}

TEST(WhereParser, AnIdIsANumberOrAName) {
  EXPECT_TRUE(ValueOf("pid == \"4711\"").isNumber);
  EXPECT_EQ(ValueOf("pid == 4711").from, 4711U);
  EXPECT_FALSE(ValueOf("tid == main").isNumber);
  EXPECT_EQ(ValueOf("tid == main").text, "main");
  EXPECT_FALSE(ValueOf("tid in {\"1..2\"}").isNumber);
  EXPECT_FALSE(ValueOf("pid contains 47").isNumber) << "compares texts";
}

TEST(WhereParser, ReadsTimeSpans) {
  EXPECT_EQ(ValueOf("delta > 50ms").duration, 50'000'000);
  EXPECT_EQ(ValueOf("delta > 1.25us").duration, 1250);
  EXPECT_EQ(ValueOf("delta < -2d").duration, -172'800'000'000'000);
  EXPECT_EQ(ValueOf("time > end - 1h").moment.nanoseconds, -3'600'000'000'000);
}

TEST(WhereParser, ReadsTimesWithAndWithoutZone) {
  using Base = WhereMoment::Base;
  constexpr std::int64_t kTen = 1'795'255'200'000'000'000;  // 2026-11-21T10:00:00Z
  constexpr std::int64_t kMinute = 60'000'000'000;
  const auto moment = [](const std::string& text) { return ValueOf("time >= " + text).moment; };
  EXPECT_EQ(moment("2026-11-21T10:00Z"), (WhereMoment{Base::Utc, kTen, kMinute}));
  EXPECT_EQ(moment("2026-11-21t12:00+02:00"), (WhereMoment{Base::Utc, kTen, kMinute}));
  EXPECT_EQ(moment("2026-11-21T04:30-0530"), (WhereMoment{Base::Utc, kTen, kMinute}));
  EXPECT_EQ(moment("2026-11-21T10:00"), (WhereMoment{Base::Shown, kTen, kMinute}));
  EXPECT_EQ(moment("2026-11-21 10:00"), (WhereMoment{Base::Shown, kTen, kMinute}));
  EXPECT_EQ(moment("\"2026-11-21 10:00\""), (WhereMoment{Base::Shown, kTen, kMinute}));
  EXPECT_EQ(moment("2026-11-21"),
            (WhereMoment{Base::Shown, kTen - 600 * kMinute, 24 * 60 * kMinute}));
  EXPECT_EQ(moment("2026-11-21T10:00:00.000001Z"), (WhereMoment{Base::Utc, kTen + 1000, 1000}));
  EXPECT_EQ(moment("1969-12-31T23:59:59.9Z"), (WhereMoment{Base::Utc, -100'000'000, 100'000'000}));
}

struct Fault {
  const char* text;
  std::size_t place, length;
  const char* reason;
};

TEST(WhereParser, AnErrorHasItsPlaceAndAReason) {
  const Fault faults[] = {
      {"", 0, 0, "empty"},
      {"   ", 0, 0, "empty"},
      {"componet == Sql", 0, 8, "there is no field \"componet\"; did you mean \"component\"?"},
      {"app == shop", 0, 3, "did you mean \"application\"?"},
      {"component = Sql", 10, 1, "did you mean \"==\"?"},
      {"component contain x", 10, 7, "did you mean \"contains\"?"},
      {"component", 9, 0, "an operator is missing"},
      {"component ==  ", 12, 0, "a value is missing"},
      {"component == and", 13, 3, "\"and\" as a value stands in quotes"},
      {"component == a$b", 14, 1, "stands in quotes"},
      {"component == 'a b'", 13, 1, "straight double quotes"},
      {"component == \"a", 13, 2, "the second quote of this text is missing"},
      {"component == two words", 17, 5, "\"and\" or \"or\" is missing before \"words\""},
      {"verbose und stack", 8, 3, "did you mean \"and\"?"},
      {"verbose & stack", 8, 1, "did you mean \"and\"?"},
      {"verbose and", 11, 0, "a test is missing"},
      {"verbose and or stack", 12, 2, "a test is missing before \"or\""},
      {"(verbose", 8, 0, "\")\" is missing"},
      {"verbose)", 7, 1, "no bracket is open here"},
      {"text < 3", 5, 1,
       "\"text\" cannot be compared by \"<\"; behind \"text\" stands ==, !=, in, "
       "contains, startswith, matches"},
      {"developer == 2", 10, 2, "\"developer\" stands alone: developer, not developer"},
      {"time not 3", 9, 1, "\"not\" stands before \"time\""},
      {"component in Sql", 13, 3, "stand in braces"},
      {"component in {}", 14, 1, "a value is missing"},
      {"component in {a b}", 16, 1, "\",\" or \"}\" is missing"},
      {"component in {a,", 16, 0, "a value is missing"},
      {"line in {20..10}", 9, 6, "this range ends before it begins"},
      {"line == 10..20", 8, 6, "a range stands behind \"in\""},
      {"line == x", 8, 1, "is no number"},
      {"tic == 18446744073709551616", 7, 20, "is no number of at most 64 bits"},
      {"pid < main", 6, 4, "compare with a number"},
      {"severity >= wran", 12, 4, "is no severity; did you mean \"warn\"?"},
      {"delta > 50", 8, 2, "a time span is a number and its unit"},
      {"delta > 0.1ns", 8, 5, "whole nanoseconds"},
      {"delta > 300000d", 8, 7, "292 years"},
      {"time > now", 7, 3, "\"now\" is no time; a time is"},
      {"time > ended", 7, 5, "did you mean end - 5m?"},
      {"time > end - 5", 13, 1, "a time span is"},
      {"time > end - ", 12, 0, "a time span is missing"},
      {"time > end - -5m", 13, 3, "one sign is enough"},
      {"time > 2026-02-30", 7, 10, "is no time"},
      {"time > 2026-11-21T24:00", 7, 16, "is no time"},
      {"time > 1066-10-14", 7, 10, "is no time"},
      {"text contains \"a\\qb\"", 16, 1, "a backslash in a text is written \\\\"},
      {"text contains \"\\x4\"", 15, 2, "two hexadecimal digits"},
      {"text contains \"\x01\"", 15, 1, "this byte is written \\x01"},
      {"text contains \"\xff\"", 15, 1, "this byte is written \\xff"},
      {"verbose \xff", 8, 1, "a byte that is no text"},
  };
  for (const Fault& fault : faults) {
    WhereError error;
    EXPECT_FALSE(ParseWhere(fault.text, error)) << fault.text;
    EXPECT_THAT(error.reason, HasSubstr(fault.reason)) << fault.text;
    EXPECT_EQ(error.place, fault.place) << fault.text << ": " << error.reason;
    EXPECT_EQ(error.length, fault.length) << fault.text << ": " << error.reason;
  }
}

TEST(WhereParser, AnErrorSaysWhatCouldStandThere) {
  const auto expected = [](const char* text) {
    WhereError error;
    EXPECT_FALSE(ParseWhere(text, error)) << text;
    return error.expected;
  };
  EXPECT_THAT(expected("verbose stack"), ElementsAre("and", "or"));
  EXPECT_THAT(expected("(pid == 3"), ElementsAre("and", "or", ")"));
  EXPECT_THAT(expected("verbose and"), ElementsAre("a field", "not", "("));
  EXPECT_THAT(expected("delta"), ElementsAre("==", "!=", "<", "<=", ">", ">="));
  EXPECT_THAT(expected("component not"), ElementsAre("in", "contains", "startswith", "matches"));
  EXPECT_THAT(expected("delta >"), ElementsAre("a time span"));
  EXPECT_THAT(expected("pid in {3"), ElementsAre(",", "}"));
  EXPECT_THAT(expected("pid in"), ElementsAre("{"));
}

TEST(WhereParser, BoundsHaveClearErrors) {
  const auto repeated = [](const std::string& what, std::size_t times) {
    std::string text;
    for (std::size_t i = 0; i < times; ++i) text += what;
    return text;
  };
  WhereError error;
  EXPECT_TRUE(ParseWhere(repeated("(", 200) + "verbose" + repeated(")", 200), error));
  EXPECT_FALSE(ParseWhere(repeated("(", 201) + "verbose" + repeated(")", 201), error));
  EXPECT_EQ(error.place, 200U);
  EXPECT_THAT(error.reason, HasSubstr("more than 200 brackets"));
  EXPECT_TRUE(ParseWhere(repeated("not ", 16'000) + "verbose", error)) << "needs no depth";
  EXPECT_TRUE(ParseWhere(repeated("stack or ", 4095) + "stack", error)) << error.reason;
  EXPECT_FALSE(ParseWhere(repeated("stack or ", 4096) + "stack", error));
  EXPECT_THAT(error.reason, HasSubstr("more than 4096 tests"));
  EXPECT_FALSE(ParseWhere("verbose" + std::string(kWhereTextMax, ' '), error));
  EXPECT_THAT(error.reason, HasSubstr("64 KiB"));
}

// True or a place in the text, whatever stands there.
void ExpectAnswer(const std::string& text) {
  WhereError error;
  if (ParseWhere(text, error)) return;
  ASSERT_LE(error.place, text.size()) << text;
  ASSERT_LE(error.length, text.size() - error.place) << text;
  ASSERT_FALSE(error.reason.empty()) << text;
}

TEST(WhereParser, EveryPrefixAndEveryChangedByteGivesAPlaceInTheText) {
  RandomWhereText random(2);
  for (int i = 0; i < 300; ++i) {
    const std::string text = WhereText(random.Tree(2));
    for (std::size_t length = 0; length < text.size(); ++length)
      ASSERT_NO_FATAL_FAILURE(ExpectAnswer(text.substr(0, length)));
    for (std::size_t at = 0; at < text.size(); ++at) {
      std::string changed = text;
      for (const char c :
           {'"', '\\', '(', '}', ' ', '\0', '\xc3', static_cast<char>(random.Any())}) {
        changed[at] = c;
        ASSERT_NO_FATAL_FAILURE(ExpectAnswer(changed));
      }
    }
  }
}

TEST(WhereNext, KnowsWhatCouldFollow) {
  using What = WhereNext::What;
  EXPECT_EQ(NextInWhere("").what, What::Test);
  EXPECT_EQ(NextInWhere("not ").what, What::Test);
  EXPECT_EQ(NextInWhere("component ").what, What::Operator);
  EXPECT_EQ(NextInWhere("component not ").what, What::AfterNot);
  EXPECT_EQ(NextInWhere("stack not ").what, What::AfterNot);
  EXPECT_EQ(NextInWhere("component in ").what, What::List);
  EXPECT_EQ(NextInWhere("component in {a").what, What::AfterValue);
  EXPECT_EQ(NextInWhere("pid == ").field, WhereField::Pid);
  EXPECT_EQ(NextInWhere("pid == ").op, WhereOperator::Equal);
  EXPECT_EQ(NextInWhere("(pid == 3 ").what, What::AfterTest);
  EXPECT_TRUE(NextInWhere("(pid == 3 ").closes);
  EXPECT_FALSE(NextInWhere("(pid == 3) ").closes);
  EXPECT_TRUE(NextInWhere("stack ").isCompared);
  EXPECT_FALSE(NextInWhere("(stack) ").isCompared);
  EXPECT_EQ(NextInWhere("componet == ").what, What::Nothing);
  EXPECT_EQ(NextInWhere("verbose stack ").what, What::Nothing);
}

}  // namespace
