#include "quor/settings/settings_text.h"

#include <gmock/gmock.h>

namespace {

using testing::ElementsAre;
using testing::HasSubstr;

unsigned Of(const char* text, const char* component, const char* category) {
  std::vector<std::string> faults;
  const SettingsText settings = SettingsText::Read(text, &faults);
  EXPECT_THAT(faults, testing::IsEmpty()) << text;
  return settings.Of(component, category).value_or(9999);
}

std::vector<std::string> FaultsOf(const std::string& text) {
  std::vector<std::string> faults;
  SettingsText::Read(text, &faults);
  return faults;
}

TEST(SettingsTextTest, TheMostExactRuleHoldsWhereverItStands) {
  for (const char* text :
       {"Net=max;Db/Query=Info+Stack;*=support", "*=support;Db/Query=Info+Stack;Net=max",
        "*=support;Db/Query=stack+INFO;net=Max;"}) {
    EXPECT_EQ(Of(text, "Net", "Connect"), 799u);
    EXPECT_EQ(Of(text, "Db", "Query"), 0x201u);
    EXPECT_EQ(Of(text, "Db", "Open"), 7u);
    EXPECT_EQ(Of(text, "Netz", ""), 7u);
  }
  EXPECT_EQ(Of("Net=off;Net/Connect=max", "Net", "Connect"), 799u);
  EXPECT_EQ(Of("Net=max", "Db", "Open"), 9999u);
  EXPECT_EQ(Of("", "Db", "Open"), 9999u);
}

TEST(SettingsTextTest, OfTwoEquallyExactRulesTheLaterHolds) {
  EXPECT_EQ(Of("Net=max;Net=off", "Net", "a"), 0u);
  EXPECT_EQ(Of("*=max;*=off", "Net", "a"), 0u);
  EXPECT_EQ(Of("NET=max;nEt=off", "Net", "a"), 0u);
}

TEST(SettingsTextTest, TheSameCapitalsAreMoreExactThanOthers) {
  const char* const text = "Net=max;net=off";
  EXPECT_EQ(Of(text, "Net", "a"), 799u);
  EXPECT_EQ(Of(text, "net", "a"), 0u);
  EXPECT_EQ(Of(text, "NET", "a"), 0u);
  EXPECT_EQ(Of("NET/A=Info;Net=max", "Net", "a"), 1u);
}

TEST(SettingsTextTest, NamesMayHoldWhatRulesAreMadeOf) {
  EXPECT_EQ(Of("a/b=Info", "a/b", "c"), 1u);
  EXPECT_EQ(Of("a/b=Info", "a", "b"), 1u);
  EXPECT_EQ(Of("a=b=Info", "a=b", "c"), 1u);
  EXPECT_EQ(Of("a + b = Info", "a + b", "c"), 1u);
  EXPECT_EQ(Of("Net/*=Info;*/*=off", "Net", "c"), 1u);
  EXPECT_EQ(Of("Net/*=Info;*/*=off", "Db", "c"), 0u);
  EXPECT_EQ(Of("Net /* /*=Info", "Net", "c"), 1u);
}

TEST(SettingsTextTest, ABadRuleIsNamedAndTheOthersHold) {
  std::vector<std::string> faults;
  const SettingsText read = SettingsText::Read("Net=Inffo;Db=max;loud;=Info;*/x=Info;C=", &faults);
  EXPECT_THAT(
      faults,
      ElementsAre("\"Inffo\" is no setting; did you mean \"Info\"? (in \"Net=Inffo\")",
                  "\"loud\" has no \"=\" before its settings", "\"=Info\" names no traces",
                  HasSubstr("\"*\" stands for all traces"), "\"\" is no setting (in \"C=\")"));
  EXPECT_EQ(read.Of("Db", "x"), 799u);
  EXPECT_EQ(read.Of("Net", "x"), std::nullopt);
}

TEST(SettingsTextTest, FaultsAndRulesAreBounded) {
  std::string bad, many;
  for (int i = 0; i < 1000; ++i) bad += "x;";
  for (int i = 0; i < 300; ++i) many += "c" + std::to_string(i) + "=off;";
  EXPECT_EQ(FaultsOf(bad).size(), 17u);
  EXPECT_EQ(FaultsOf(bad).back(), "and 984 more of its rules cannot be used");
  EXPECT_EQ(SettingsText::Read(many).Rules().size(), SettingsText::kRulesMax);
  EXPECT_THAT(FaultsOf(many).front(), HasSubstr("one rule too many"));
  EXPECT_LT(FaultsOf(std::string(100000, 'x')).front().size(), 200u);
}

TEST(SettingsTextTest, ALaterTextReplacesTheRulesForTheSameTraces) {
  SettingsText sum = SettingsText::Read(" Net = max ; *=off");
  sum.Add(SettingsText::Read("Net=Info + Warn;Db=max"));
  EXPECT_EQ(sum.Written(), "*=off;Net=Info + Warn;Db=max");
  EXPECT_EQ(SettingsText::Read(sum.Written()).Written(), sum.Written());
  EXPECT_EQ(sum.Of("Net", "x"), 3u);
  EXPECT_EQ(sum.AnySettings(), 799u);
}

}  // namespace
