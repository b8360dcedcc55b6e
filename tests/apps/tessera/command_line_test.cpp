// What the program takes off its command line, and what it leaves to the application.
#include "command_line.h"

#include <gtest/gtest.h>

#include "support/temp_dir.h"

namespace {

using Arguments = std::vector<std::string>;

TEST(ProgramOptions, AFileAloneIsLeftToTheApplication) {
  const ProgramOptions options = ParseProgramOptions({"web.trc"});
  EXPECT_EQ(options.rest, Arguments{"web.trc"});
  EXPECT_EQ(options.wrong, "");
  EXPECT_TRUE(options.size.isEmpty());
  EXPECT_FALSE(options.dark || options.help || options.version);
}

TEST(ProgramOptions, AValueStandsAfterTheOptionOrAfterItsEqualsSign) {
  const ProgramOptions options =
      ParseProgramOptions({"--settings", "a.ini", "--render=b.png", "--monitor", "web", "--dark"});
  EXPECT_EQ(options.settings, "a.ini");
  EXPECT_EQ(options.render, "b.png");
  EXPECT_EQ(options.monitor, "web");
  EXPECT_TRUE(options.dark);
  EXPECT_TRUE(options.rest.empty());
}

TEST(ProgramOptions, AnOptionWithoutItsValueIsWrong) {
  EXPECT_EQ(ParseProgramOptions({"--settings"}).wrong, "--settings needs a value");
  EXPECT_EQ(ParseProgramOptions({"--monitor="}).wrong, "--monitor needs a value");
}

TEST(ProgramOptions, ASizeIsTwoNumbersThatAWindowCanHave) {
  EXPECT_EQ(ParseProgramOptions({"--size", "1200x800"}).size, QSize(1200, 800));
  EXPECT_EQ(ParseProgramOptions({"--size=100x32767"}).size, QSize(100, 32767));
  for (const char* wrong : {"1200", "1200x", "x800", "1200x800x", "99x800", "1200x32768",
                            "-1200x800", "1200 x 800", "99999999999x800"})
    EXPECT_NE(ParseProgramOptions({"--size", wrong}).wrong, "") << wrong;
}

TEST(ProgramOptions, WhatIsNotKnownIsLeftForTheWindowSystem) {
  const ProgramOptions options = ParseProgramOptions({"-style", "fusion", "--dark", "web.trc"});
  EXPECT_EQ(options.rest, (Arguments{"-style", "fusion", "web.trc"}));
  EXPECT_TRUE(options.dark);
}

TEST(ProgramOptions, AfterTwoDashesEverythingIsAFile) {
  const ProgramOptions options = ParseProgramOptions({"--", "--dark", "-h"});
  EXPECT_EQ(options.rest, (Arguments{"--", "--dark", "-h"}));
  EXPECT_FALSE(options.dark || options.help);
}

TEST(WrongRest, OneFileOrNoneIsGoodAndTwoAreNot) {
  EXPECT_EQ(WrongRest({}), "");
  EXPECT_EQ(WrongRest({"web.trc"}), "");
  EXPECT_EQ(WrongRest({"web.trc", "db.trc"}), "one FILE at a time; the window opens more");
}

TEST(WrongRest, AnOptionThatNobodyTookIsNamedUnlessItIsAFile) {
  EXPECT_EQ(WrongRest({"web.trc", "--colour"}), "unknown option --colour");
  EXPECT_EQ(WrongRest({"--", "--colour"}), "");
}

TEST(UnusableSettings, AFileThatDoesNotExistYetIsGoodAndAFolderIsNot) {
  const TempDir directory;
  EXPECT_EQ(UnusableSettings(""), "");
  EXPECT_EQ(UnusableSettings(directory.File("new.ini")), "");
  EXPECT_EQ(UnusableSettings(directory.File("old.ini", "[a]\n")), "");
  EXPECT_EQ(UnusableSettings(directory.Path()), "--settings wants a file: " + directory.Path());
}

}  // namespace
