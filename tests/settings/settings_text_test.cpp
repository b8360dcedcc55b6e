#include "settings/settings_text.h"

#include <gtest/gtest.h>

#include <random>

namespace {

constexpr char kFile[] =
    "[Software\\A]\n"
    "Width=12\n"
    "Name=\"x\"\n"
    "\n"
    "[Software\\B]\n"
    "Width=34\n";

std::string_view Find(std::string_view file, std::string_view key, std::string_view name) {
  return FindSetting(file, key, name).value_or("(none)");
}

TEST(SettingsText, AValueBelongsToItsSection) {
  EXPECT_EQ(Find(kFile, "Software\\A", "Width"), "12");
  EXPECT_EQ(Find(kFile, "Software\\B", "Width"), "34");
  EXPECT_EQ(Find(kFile, "Software\\B", "Name"), "(none)");
  EXPECT_EQ(Find(kFile, "Software", "Width"), "(none)");
  EXPECT_EQ(Find("", "Software", "Width"), "(none)");
}

TEST(SettingsText, SectionsAndNamesMatchIgnoringCaseAndBlanksAround) {
  EXPECT_EQ(Find(" [software\\a] \r\n  WIDTH = 12 \r\n", "Software\\A", "Width"), "12");
}

TEST(SettingsText, OfAValueThatStandsTwiceTheLastCountsAndIsChanged) {
  const std::string file = "[A]\nx=1\nx=2\n[B]\nx=9\n[A]\nx=3\n";
  EXPECT_EQ(Find(file, "A", "x"), "3");
  EXPECT_EQ(WithSetting(file, "A", "x", "4"), "[A]\nx=1\nx=2\n[B]\nx=9\n[A]\nx=4\n");
}

TEST(SettingsText, AChangeTouchesOneLineAndKeepsWhatItCannotRead) {
  const std::string file =
      "\xEF\xBF\xFF garbage\n; note\n[A\n[A]\n=\n# x=8\nno sign\nx=old\n[B]\nx=9";
  EXPECT_EQ(WithSetting(file, "A", "x", "7"),
            "\xEF\xBF\xFF garbage\n; note\n[A\n[A]\n=\n# x=8\nno sign\nx=7\n[B]\nx=9");
}

TEST(SettingsText, ANewValueGoesToTheEndOfItsSection) {
  EXPECT_EQ(WithSetting(kFile, "Software\\A", "Height", "5"),
            "[Software\\A]\n"
            "Width=12\n"
            "Name=\"x\"\n"
            "Height=5\n"
            "\n"
            "[Software\\B]\n"
            "Width=34\n");
  EXPECT_EQ(WithSetting("[A]", "A", "x", "1"), "[A]\nx=1");
}

TEST(SettingsText, ANewSectionGoesToTheEndOfTheFile) {
  EXPECT_EQ(WithSetting("", "A", "x", "1"), "[A]\nx=1\n");
  EXPECT_EQ(WithSetting("[A]\nx=1\n", "B", "x", "2"), "[A]\nx=1\n\n[B]\nx=2\n");
  EXPECT_EQ(WithSetting("[A]\nx=1", "B", "x", "2"), "[A]\nx=1\n\n[B]\nx=2\n");
}

TEST(SettingsText, NumbersAreDecimalAndOf32Bits) {
  EXPECT_EQ(NumberSetting(4294967295), "4294967295");
  EXPECT_EQ(ReadNumberSetting("4294967295"), 4294967295u);
  EXPECT_EQ(ReadNumberSetting("007"), 7u);
  for (const char* bad : {"", "-1", "+1", "4294967296", "99999999999999999999", "12x", "0x10",
                          "1 2", "\"5\"", "hex:05", "1.5"}) {
    EXPECT_FALSE(ReadNumberSetting(bad)) << bad;
  }
}

TEST(SettingsText, TextsOfAnyBytesComeBackTheSame) {
  std::string all;
  for (int byte = 0; byte < 256; ++byte) all += static_cast<char>(byte);
  for (const std::string& text :
       {std::string(), std::string(" "), std::string("a=\"b\"]%41"), std::string("ü € 😀"), all}) {
    const std::string setting = TextSetting(text);
    EXPECT_EQ(setting.find('\n'), setting.npos);
    EXPECT_EQ(ReadTextSetting(setting), text);
    EXPECT_EQ(ReadTextSetting(Find("[k]\nn=" + setting + "\n", "k", "n")), text);
  }
  for (const char* bad : {"", "\"", "plain", "\"open", "12", "hex:00"}) {
    EXPECT_FALSE(ReadTextSetting(bad)) << bad;
  }
}

TEST(SettingsText, APercentSignThatNoDigitsFollowStandsForItself) {
  EXPECT_EQ(ReadTextSetting("\"100% %4 %zz %41\""), "100% %4 %zz A");
}

TEST(SettingsText, BytesAreHexadecimalDigits) {
  EXPECT_EQ(BytesSetting({"\x00\x7F\xFF", 3}), "hex:007FFF");
  EXPECT_EQ(ReadBytesSetting("hex:007fFF"), std::string("\x00\x7F\xFF", 3));
  EXPECT_EQ(ReadBytesSetting("hex:"), "");
  for (const char* bad : {"", "00", "hex:0", "hex:0g", "hex:-1", "hex: 00", "\"hex:00\""}) {
    EXPECT_FALSE(ReadBytesSetting(bad)) << bad;
  }
}

TEST(SettingsText, KeysAndNamesOfAnyBytesAreFoundAgain) {
  std::string file = "[A]\nx=1\n";
  int number = 0;
  for (const char* odd : {"a]b", "[x]", "a=b", "#x", ";x", " x ", "%41", "a\nb", "\"q\"", "\\\\"}) {
    file = WithSetting(file, odd, "n", std::to_string(++number));
    file = WithSetting(file, "A", odd, std::to_string(++number));
    EXPECT_EQ(Find(file, odd, "n"), std::to_string(number - 1)) << odd;
    EXPECT_EQ(Find(file, "A", odd), std::to_string(number)) << odd;
  }
  EXPECT_EQ(Find(file, "A", "x"), "1");
}

TEST(SettingsText, FilesOfRandomBytesNeitherCrashNorLoseAWrittenValue) {
  std::mt19937 random(1);
  constexpr char kSigns[] = "[]=%\"\n\r A4x;#\xC3\xFF\\";
  for (int round = 0; round < 2000; ++round) {
    std::string file;
    for (unsigned length = random() % 80; length > 0; --length) {
      file += kSigns[random() % (sizeof kSigns)];
    }
    const std::string changed = WithSetting(file, "A", "x", "4");
    ASSERT_EQ(Find(changed, "A", "x"), "4") << testing::PrintToString(file);
  }
}

}  // namespace
