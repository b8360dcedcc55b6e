// Sets of colour rules and their files.
#include "where/colours/colour_rules.h"

#include <gtest/gtest.h>

#include <random>

#include "support/temp_dir.h"
#include "where/colours/colour_program.h"

namespace {

ColourRule Rule(std::string name, std::string where) {
  return {std::move(name), std::move(where), {0x87, 0, 0}, {0xff, 0xd7, 0xd7}};
}

std::string WhyNot(std::string_view content) {
  std::string why;
  EXPECT_FALSE(ReadColourRules(content, &why)) << content;
  return why;
}

// A file with this rule.
std::string FileOf(const std::string& rule) {
  return "{\"colour-rules\": 1,\n\"rules\": [\n" + rule + "\n]}";
}

TEST(ColourRules, AreReadAsTheyWereWritten) {
  std::mt19937 random(20261123);
  const std::vector<std::string> pieces = {"a",    "\"",     "\\",      "\n",         "\t",
                                           "\x01", "\u00e9", "\u4e2d",  "\U0001F600", "}",
                                           "and ", " ",      "severity"};
  const auto text = [&](bool line) {
    std::string made;
    for (std::size_t i = random() % 12; i > 0; --i) {
      const std::string& piece = pieces[random() % pieces.size()];
      if (!line || static_cast<unsigned char>(piece[0]) >= ' ') made += piece;
    }
    return made;
  };
  for (int round = 0; round < 300; ++round) {
    ColourRules rules;
    for (std::size_t i = random() % 6; i > 0; --i) {
      const auto colour = [&] {
        return Colour{static_cast<std::uint8_t>(random()), static_cast<std::uint8_t>(random()),
                      static_cast<std::uint8_t>(random())};
      };
      rules.push_back({"n" + text(true), text(false), colour(), colour(), random() % 2 != 0});
      ASSERT_TRUE(CheckColourRule(rules.back(), nullptr));
    }
    std::string why;
    ASSERT_EQ(ReadColourRules(ColourRulesText(rules), &why), rules)
        << why << ColourRulesText(rules);
  }
}

TEST(ColourRules, ARuleIsOnUnlessItsFileSaysOtherwise) {
  const auto rules = ReadColourRules(
      R"({"rules": [{"ground": "#ffffff", "name": "x", "ink": "#000000", "where": "stack"}],
          "colour-rules": 1})",
      nullptr);
  ASSERT_TRUE(rules);
  EXPECT_EQ(*rules, (ColourRules{{"x", "stack", {}, {0xff, 0xff, 0xff}, true}}));
}

TEST(ColourRules, AnErrorOfAFileHasItsLine) {
  EXPECT_EQ(WhyNot(""), "line 1: this is no JSON");
  EXPECT_EQ(WhyNot("{\n\n  \"colour-rules\": 1,\n  oops"), "line 4: this is no JSON");
  EXPECT_EQ(WhyNot("[]"), "line 1: a set of rules is an object");
  EXPECT_EQ(WhyNot("7"), "line 1: a set of rules is an object");
  EXPECT_EQ(WhyNot("{\"rules\": []}"), "line 1: \"colour-rules\" is missing");
  EXPECT_EQ(WhyNot("{\"colour-rules\": 1}"), "line 1: \"rules\" is missing");
  EXPECT_EQ(WhyNot("{\"colour-rules\": 1, \"rules\": []} x"), "line 1: this is no JSON");
  EXPECT_EQ(WhyNot("{\"colour-rules\": 2}"), "line 1: this file is of another version than 1");
  EXPECT_EQ(WhyNot("{\"colour-rules\": \"1\"}"), "line 1: \"colour-rules\" is the number 1");
  EXPECT_EQ(WhyNot("{\"colour-rules\": -1}"), "line 1: \"colour-rules\" is the number 1");
  EXPECT_EQ(WhyNot("{\"rules\": {}}"), "line 1: \"rules\" is a list");
  EXPECT_EQ(WhyNot("{\"rules\": [\n3]}"), "line 2: a rule is an object");
  EXPECT_EQ(WhyNot("{\"rules\": [\n[]]}"), "line 2: a rule is an object");
  EXPECT_EQ(WhyNot("{\"ruls\": []}"), "line 1: there is no key \"ruls\"; did you mean \"rules\"?");
  EXPECT_EQ(WhyNot("{\"rules\": [],\n\"rules\": []}"), "line 2: \"rules\" is given twice");
}

TEST(ColourRules, AnErrorOfARuleHasItsLine) {
  const std::string name = "{\"name\": \"x\",\n", where = "\"where\": \"stack\",\n",
                    ink = "\"ink\": \"#000000\",\n", ground = "\"ground\": \"#ffffff\"";
  ASSERT_TRUE(ReadColourRules(FileOf(name + where + ink + ground + "}"), nullptr));
  EXPECT_EQ(WhyNot(FileOf(name + where + "\"ink\": \"red\"")),
            "line 5: \"ink\" is a colour such as \"#a01020\"");
  EXPECT_EQ(WhyNot(FileOf(name + where + ink + "\"on\": 1")), "line 6: \"on\" is true or false");
  EXPECT_EQ(WhyNot(FileOf(name + "\"where\": true")), "line 4: \"where\" is a text");
  EXPECT_EQ(WhyNot(FileOf(name + "\"where\": {}")), "line 4: \"where\" is a text");
  EXPECT_EQ(WhyNot(FileOf(name + "\"where\": null")), "line 4: no value can be null");
  EXPECT_EQ(WhyNot(FileOf(name + "\"wher\": 1")),
            "line 4: there is no key \"wher\"; did you mean \"where\"?");
  EXPECT_EQ(WhyNot(FileOf(name + "\"name\": 1")), "line 4: \"name\" is given twice");
  EXPECT_EQ(WhyNot(FileOf(name + ink + ground + "}")), "line 5: \"where\" is missing");
  EXPECT_EQ(WhyNot(FileOf("{\"name\": \" \",\n" + where + ink + ground + "}")),
            "line 6: a rule needs a name");
  EXPECT_EQ(WhyNot(FileOf("{\"name\": \"a\\nb\",\n" + where + ink + ground + "}")),
            "line 6: the name has a character that cannot be shown");
  EXPECT_EQ(WhyNot(FileOf("{\"name\": \"\xff\"")), "line 3: this is no JSON") << "not UTF-8";
}

TEST(ColourRules, AFileIsBoundedInEachOfItsParts) {
  ColourRules rules(kColourRulesMax, Rule("x", "stack"));
  rules.front().name = std::string(kColourNameBytes, 'n');
  rules.front().where = std::string(kColourTextBytes, 't');
  EXPECT_EQ(ReadColourRules(ColourRulesText(rules), nullptr), rules);
  rules.push_back(Rule("x", "stack"));
  EXPECT_NE(WhyNot(ColourRulesText(rules)).find("more than 1,000 rules"), std::string::npos);
  EXPECT_NE(WhyNot(ColourRulesText({Rule(std::string(kColourNameBytes + 1, 'n'), "stack")}))
                .find("the name is too long"),
            std::string::npos);
  EXPECT_NE(WhyNot(ColourRulesText({Rule("x", std::string(kColourTextBytes + 1, 't'))}))
                .find("the filter text is too long"),
            std::string::npos);
  const std::string empty = "{\"colour-rules\": 1, \"rules\": []}";
  const std::string most = empty + std::string(kColourFileBytes - empty.size(), ' ');
  EXPECT_TRUE(ReadColourRules(most, nullptr));
  EXPECT_NE(WhyNot(most + " ").find("at most 1 MiB"), std::string::npos);
}

TEST(ColourRules, AFileIsReplacedWholeAndItsErrorsHaveItsPath) {
  const TempDir folder;
  const std::string path = folder.File("set.colours");
  std::string why;
  EXPECT_FALSE(LoadColourRules(path, &why));
  EXPECT_EQ(why, path + ": No such file or directory");
  ASSERT_TRUE(SaveColourRules(path, {Rule("a", "stack"), Rule("b", "verbose")}, &why)) << why;
  ASSERT_TRUE(SaveColourRules(path, {Rule("c", "stack")}, &why)) << why;
  EXPECT_EQ(LoadColourRules(path, &why), ColourRules{Rule("c", "stack")});
  folder.File("wrong.colours", "{\n]");
  EXPECT_FALSE(LoadColourRules(folder.File("wrong.colours"), &why));
  EXPECT_EQ(why, folder.File("wrong.colours") + ": line 2: this is no JSON");
  EXPECT_FALSE(LoadColourRules(folder.Path(), &why));
  EXPECT_EQ(why, folder.Path() + ": Is a directory");
  EXPECT_FALSE(SaveColourRules(folder.File("none/set.colours"), {}, &why));
}

TEST(ColourProgram, KeepsARuleWhoseTextIsWrongAndSaysWhereItIs) {
  const ColourProgramPtr program =
      ColourProgram::Compile({Rule("a", "severity >= wran"), Rule("b", "stack"), Rule("c", "")});
  ASSERT_TRUE(program->ErrorOf(0));
  EXPECT_EQ(program->ErrorOf(0)->place, 12u);
  EXPECT_EQ(program->Rules()[0].where, "severity >= wran");
  EXPECT_FALSE(program->ProgramOf(0));
  EXPECT_FALSE(program->ErrorOf(1));
  EXPECT_TRUE(program->ProgramOf(1));
  EXPECT_TRUE(program->ErrorOf(2)) << "an empty text";
}

TEST(ColourProgram, ARuleOfMarksOrNotesIsRefusedWithItsPlace) {
  const ColourProgramPtr program = ColourProgram::Compile(
      {Rule("a", "marked"), Rule("b", "stack or not note contains \"x\""), Rule("c", "stack")});
  ASSERT_TRUE(program->ErrorOf(0));
  EXPECT_EQ(program->ErrorOf(0)->reason,
            "colour rules do not know marks and notes: \"marked\" works in filter texts only");
  ASSERT_TRUE(program->ErrorOf(1));
  EXPECT_EQ(program->ErrorOf(1)->place, 13u);
  EXPECT_EQ(program->ErrorOf(1)->length, 17u);
  EXPECT_FALSE(program->ProgramOf(0));
  EXPECT_FALSE(program->ProgramOf(1));
  EXPECT_TRUE(program->ProgramOf(2));
}

TEST(ColourProgram, ARuleThatIsOffIsNotAskedButItsErrorIsKnown) {
  ColourRules rules = {Rule("a", "stack"), Rule("b", "stac")};
  for (ColourRule& rule : rules) rule.on = false;
  const ColourProgramPtr program = ColourProgram::Compile(rules);
  EXPECT_FALSE(program->ProgramOf(0));
  EXPECT_FALSE(program->ErrorOf(0));
  EXPECT_TRUE(program->ErrorOf(1));
}

TEST(ColourProgram, TheTestsOfAllRulesThatAreOnAreBoundedTogether) {
  std::string many = "line == 0";
  for (int i = 1; i < 250; ++i) many += " or line==" + std::to_string(i);
  ColourRules rules(17, Rule("x", many));
  const auto refused = [&] {
    const ColourProgramPtr program = ColourProgram::Compile(rules);
    std::vector<std::size_t> all;
    for (std::size_t i = 0; i < rules.size(); ++i) {
      EXPECT_NE(program->ErrorOf(i).has_value(), program->ProgramOf(i) != nullptr || !rules[i].on);
      if (program->ErrorOf(i)) all.push_back(i);
    }
    return all;
  };
  EXPECT_EQ(refused(), std::vector<std::size_t>{16}) << "16 have 4,000 tests";
  rules[3].on = false;
  EXPECT_EQ(refused(), std::vector<std::size_t>{});
}

}  // namespace
