#include "where/complete/where_complete.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "support/random_where_text.h"
#include "where/text/where_parser.h"
#include "where/text/where_writer.h"

namespace {

using testing::Contains;
using testing::ElementsAre;
using testing::IsEmpty;
using testing::Not;

std::vector<std::string> NamesOf(WhereField field) {
  switch (field) {
    case WhereField::Component:
      return {"Sql", "Cache", "Net/Socket", "two words", "a\"b", "\xff\x01", "Cache", "and", ""};
    case WhereField::Pid:
      return {"4711", "worker one", "10..20"};
    default:
      return {};
  }
}

// The caret stands at "|".
std::vector<WhereCompletion> At(std::string text, const WhereNames& names = NamesOf) {
  const std::size_t caret = text.find('|');
  return WhereCompletions(text.erase(caret, 1), caret, names);
}

std::vector<std::string> Inserts(const std::string& text) {
  std::vector<std::string> inserts;
  for (const WhereCompletion& one : At(text)) inserts.push_back(one.insert);
  return inserts;
}

// The text with the only completion, or with the first.
std::string Completed(std::string text) {
  const auto all = At(text);
  text.erase(text.find('|'), 1);
  if (all.empty()) return "none";
  const WhereCompletion& first = all.front();
  return text.replace(first.replaceFrom, first.replaceTo - first.replaceFrom, first.insert);
}

TEST(WhereComplete, AnEmptyTextOffersAllFieldsAndNot) {
  const auto all = At("|");
  EXPECT_EQ(all.size(), kWhereFields + 2);
  EXPECT_EQ(all.front().insert, "severity");
  EXPECT_EQ(all.front().kind, WhereCompletion::Kind::Field);
  EXPECT_EQ(all.front().note, "info < warn < error");
  EXPECT_THAT(Inserts("|"), Contains("not"));
}

TEST(WhereComplete, AFieldIsCompletedFromItsBeginning) {
  EXPECT_THAT(Inserts("t|"), ElementsAre("tic", "time", "tid", "text"));
  EXPECT_THAT(Inserts("not (COMP|"), ElementsAre("component"));
  EXPECT_EQ(Completed("verbose and comp|"), "verbose and component");
  EXPECT_EQ(Completed("co|mp == Sql"), "count == Sql") << "the whole word is replaced";
  EXPECT_THAT(Inserts("component|"), IsEmpty()) << "it is there";
}

TEST(WhereComplete, OperatorsFitTheField) {
  EXPECT_THAT(Inserts("delta |"), ElementsAre("==", "!=", "<", "<=", ">", ">="));
  EXPECT_THAT(Inserts("component |"),
              ElementsAre("==", "!=", "in", "contains", "startswith", "matches"));
  EXPECT_THAT(Inserts("component s|"), ElementsAre("startswith"));
  EXPECT_THAT(Inserts("component not |"), ElementsAre("in", "contains", "startswith", "matches"));
  EXPECT_THAT(Inserts("delta >|"), ElementsAre(">", ">="));
  EXPECT_THAT(Inserts("component !|"), ElementsAre("!="));
  EXPECT_THAT(Inserts("verbose |"), ElementsAre("and", "or"));
  EXPECT_THAT(Inserts("stack c|"), ElementsAre("contains"));
  EXPECT_THAT(Inserts("(pid == 3 |"), ElementsAre("and", "or", ")"));
  EXPECT_THAT(Inserts("pid in |"), ElementsAre("{"));
  EXPECT_THAT(Inserts("pid in {3|"), IsEmpty());
  EXPECT_THAT(Inserts("pid in {3 |"), ElementsAre(",", "}"));
  EXPECT_THAT(Inserts("!|").size(), kWhereFields + 2);
}

TEST(WhereComplete, ValuesAreWordsOfTheLanguageOrNamesOfTheDocument) {
  EXPECT_THAT(Inserts("severity >= |"), ElementsAre("info", "warn", "error"));
  EXPECT_THAT(Inserts("severity in {warn, e|"), ElementsAre("error"));
  EXPECT_THAT(Inserts("time > e|"), ElementsAre("end", "end - 1m", "end - 10m", "end - 1h"));
  EXPECT_THAT(Inserts("component == |"), ElementsAre("\"a\\\"b\"", "\"and\"", "Cache", "Net/Socket",
                                                     "Sql", "\"two words\"", "\"\\xff\\x01\""));
  EXPECT_THAT(Inserts("component in {Sql, c|"), ElementsAre("Cache", "Net/Socket"))
      << "those that begin so come first";
  EXPECT_THAT(Inserts("pid == |"), ElementsAre("\"10..20\"", "4711", "\"worker one\""));
  EXPECT_THAT(Inserts("pid < |"), ElementsAre("4711")) << "only numbers have an order";
  EXPECT_THAT(Inserts("component startswith |"), Contains("\"Sql\"")) << "parts are quoted";
}

TEST(WhereComplete, ANameIsCompletedWithinItsQuotes) {
  EXPECT_EQ(Completed("component == \"tw|"), "component == \"two words\"");
  EXPECT_EQ(Completed("component == \"tw|\" and verbose"),
            "component == \"two words\" and verbose");
  EXPECT_EQ(Completed("component == \"tw| and text contains \"x\""),
            "component == \"two words\" and text contains \"x\"")
      << "the next quote is another's";
  EXPECT_EQ(Completed("component == \"S|"), "component == Sql");
  EXPECT_EQ(Completed("component == \"a\\|"), "component == \"a\\\"b\"") << "half an escape";
  EXPECT_EQ(Completed("component == \"a\\\"|"), "component == \"a\\\"b\"");
}

TEST(WhereComplete, ATextOrAPatternIsNotCompleted) {
  EXPECT_THAT(Inserts("text contains |"), IsEmpty());
  EXPECT_THAT(Inserts("text contains \"S|"), IsEmpty());
  EXPECT_THAT(Inserts("text contains \"component == |"), IsEmpty());
  EXPECT_THAT(Inserts("component matches \"S|"), IsEmpty());
  EXPECT_THAT(Inserts("severity == \"w|"), IsEmpty());
  EXPECT_THAT(Inserts("component == \"Sql\"|"), IsEmpty()) << "behind the second quote";
}

TEST(WhereComplete, NothingFollowsAnError) {
  EXPECT_THAT(Inserts("componet == |"), IsEmpty());
  EXPECT_THAT(Inserts("verbose stack |"), IsEmpty());
  EXPECT_THAT(Inserts("time > end - |"), IsEmpty());
}

TEST(WhereComplete, ManyNamesAreCutAndOnlyThoseOfTheFieldAreAskedFor) {
  std::vector<WhereField> asked;
  const WhereNames names = [&](WhereField field) {
    asked.push_back(field);
    std::vector<std::string> all;
    for (int i = 0; i < 1000; ++i) all.push_back("n" + std::to_string(i));
    return all;
  };
  const auto all = At("machine == |", names);
  ASSERT_EQ(all.size(), kWhereCompletionsMax);
  EXPECT_EQ(all.front().insert, "n0");
  EXPECT_EQ(all.back().insert, "n278") << "the first ones in their order";
  EXPECT_THAT(asked, ElementsAre(WhereField::Machine));
  At("mach| == 1", names);
  At("line == |", names);
  EXPECT_THAT(asked, ElementsAre(WhereField::Machine));
}

TEST(WhereComplete, ACaretBehindTheTextIsAtItsEnd) {
  EXPECT_THAT(WhereCompletions("verbose ", 99, NamesOf).size(), 2U);
}

// What is inserted at any place of any text leaves no error before its end.
TEST(WhereComplete, AnyCompletionOfAnyTextCanBeRead) {
  RandomWhereText random(3);
  std::size_t completions = 0;
  for (int i = 0; i < 400; ++i) {
    const std::string text = WhereText(random.Tree(2));
    for (std::size_t caret = 0; caret <= text.size(); ++caret) {
      for (const WhereCompletion& one : WhereCompletions(text, caret, NamesOf)) {
        ++completions;
        ASSERT_LE(one.replaceFrom, caret);
        ASSERT_GE(one.replaceTo, caret);
        ASSERT_LE(one.replaceTo, text.size());
        const std::string made = text.substr(0, one.replaceFrom) + one.insert;
        WhereError error;
        const bool isRead = ParseWhere(made, error) || error.place == made.size();
        ASSERT_TRUE(isRead) << made << "\n" << error.place << ": " << error.reason;
      }
    }
  }
  EXPECT_GT(completions, 20'000U);
}

}  // namespace
