// What the settings keep of colour rules.
#include "listview/colours/active_colours.h"

#include <gtest/gtest.h>

#include "settings/registry.h"
#include "support/temp_dir.h"
#include "where/colours/shipped_colours.h"

namespace {

class ActiveColoursTest : public testing::Test {
 protected:
  ActiveColoursTest() {
    SetSettingsFile(m_directory.File("settings.ini"));
    ReadActiveColours();
  }
  ~ActiveColoursTest() override {
    SetSettingsFile(m_directory.File("none.ini"));
    ReadActiveColours();
    SetSettingsFile("");
  }
  std::string Names() {
    std::string names;
    for (const SavedColours& set : ReadSavedColours())
      names += set.name + ":" + std::to_string(set.rules.size()) + " ";
    return names;
  }

  const ColourRules m_two = {
      {"a \"quoted\"\\", "text == \"x\ty\"\nand stack", {1, 2, 3}, {4, 5, 6}},
      {"b", "wrong text", {}, {}, false}};
  TempDir m_directory;
  std::string m_why;
};

TEST_F(ActiveColoursTest, NoRulesAreInUseUntilSomebodyChoosesThem) {
  EXPECT_FALSE(ActiveColours());
  EXPECT_FALSE(ReadUsedColours().shown);
  EXPECT_TRUE(ReadUsedColours().rules.empty());
}

TEST_F(ActiveColoursTest, WhatIsUsedIsInForceAtOnceAndInTheNextRun) {
  ASSERT_TRUE(UseColours({true, m_two}, &m_why)) << m_why;
  ASSERT_TRUE(ActiveColours());
  EXPECT_EQ(ActiveColours()->Rules(), m_two);
  ReadActiveColours();
  ASSERT_TRUE(ActiveColours());
  EXPECT_EQ(ActiveColours()->Rules(), m_two);
}

TEST_F(ActiveColoursTest, RulesThatAreNotShownAreKept) {
  ASSERT_TRUE(UseColours({false, m_two}, &m_why));
  EXPECT_FALSE(ActiveColours());
  ReadActiveColours();
  EXPECT_FALSE(ActiveColours());
  EXPECT_EQ(ReadUsedColours().rules, m_two);
}

TEST_F(ActiveColoursTest, SettingsThatCannotBeReadAreNoRules) {
  const std::string key = std::string(kRegTraceView) + "\\Colours";
  NtRegPut(HKEY_CURRENT_USER, key, "Shown", 1U);
  NtRegPut(HKEY_CURRENT_USER, key, "Rules", "{\"colour-rules\": 1");
  ReadActiveColours();
  ASSERT_TRUE(ActiveColours());
  EXPECT_TRUE(ActiveColours()->Rules().empty());
  NtRegPut(HKEY_CURRENT_USER, key, "Saved", "no tab\n\tno name\nbroken\t{}\n");
  EXPECT_EQ(Names(), "");
}

TEST_F(ActiveColoursTest, SavedSetsComeByNameAndReplaceOneOfTheirName) {
  ASSERT_TRUE(SaveColours("night", m_two, &m_why));
  ASSERT_TRUE(SaveColours(" Day\t", ShippedColours(ColourGround::Light), &m_why));
  EXPECT_EQ(Names(), "Day:8 night:2 ");
  EXPECT_EQ(ReadSavedColours()[1].rules, m_two);
  ASSERT_TRUE(SaveColours("NIGHT", {}, &m_why));
  EXPECT_EQ(Names(), "Day:8 NIGHT:0 ");
  DeleteSavedColours("day");
  EXPECT_EQ(Names(), "NIGHT:0 ");
  EXPECT_FALSE(SaveColours(" ", m_two, &m_why));
  EXPECT_EQ(m_why, "A set of colour rules needs a name.");
}

TEST_F(ActiveColoursTest, NoMoreSetsAreSavedThanCanBeRead) {
  for (std::size_t i = 0; i < kSavedColourSets; ++i)
    ASSERT_TRUE(SaveColours("set " + std::to_string(i), {}, &m_why));
  EXPECT_FALSE(SaveColours("one more", {}, &m_why));
  EXPECT_TRUE(SaveColours("set 7", m_two, &m_why)) << "in place of one";
  const ColourRules many(300, {"x", std::string(kColourTextBytes, 't'), {}, {}});
  EXPECT_FALSE(SaveColours("set 8", many, &m_why));
  EXPECT_FALSE(UseColours({true, many}, &m_why));
  EXPECT_EQ(ReadSavedColours().size(), kSavedColourSets);
}

}  // namespace
