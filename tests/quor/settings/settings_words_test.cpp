#include "quor/settings/settings_words.h"

#include <gtest/gtest.h>

namespace {

std::string WhyNot(const char* words) {
  std::string why;
  EXPECT_FALSE(SettingsOf(words, &why)) << words;
  return why;
}

TEST(SettingsWordsTest, PresetsAndBitsAreReadWhateverTheirCapitals) {
  for (const char* words : {"max", "Max", "MAX", " max "}) EXPECT_EQ(SettingsOf(words), 799u);
  EXPECT_EQ(SettingsOf("off"), 0u);
  EXPECT_EQ(SettingsOf("support"), 7u);
  EXPECT_EQ(SettingsOf("info + WARN+error"), 7u);
  EXPECT_EQ(SettingsOf("Info+Verbose+Location+Stack"), 0x311u);
  EXPECT_EQ(SettingsOf("support+Stack"), 0x207u);
}

// Without a severity the bit alone would let no trace pass.
TEST(SettingsWordsTest, DeveloperIsThePresetUnlessASeverityIsNamed) {
  EXPECT_EQ(SettingsOf("developer"), 15u);
  EXPECT_EQ(SettingsOf("Developer"), 15u);
  EXPECT_EQ(SettingsOf("Developer+Stack"), 0x20Fu);
  EXPECT_EQ(SettingsOf("Info+Developer"), 9u);
  EXPECT_EQ(SettingsOf("developer+Error"), 12u);
}

TEST(SettingsWordsTest, WhatIsNearIsNamed) {
  EXPECT_EQ(WhyNot("Inffo"), "\"Inffo\" is no setting; did you mean \"Info\"?");
  EXPECT_EQ(WhyNot("Info+Stak"), "\"Stak\" is no setting; did you mean \"Stack\"?");
  EXPECT_EQ(WhyNot("developr"), "\"developr\" is no setting; did you mean \"Developer\"?");
  EXPECT_EQ(WhyNot("loud"), "\"loud\" is no setting");
  EXPECT_EQ(WhyNot(""), "\"\" is no setting");
  EXPECT_EQ(WhyNot("Info+"), "\"\" is no setting");
}

}  // namespace
