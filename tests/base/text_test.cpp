#include "base/text.h"

#include <gtest/gtest.h>

namespace {

constexpr char kReplacement[] = "\xEF\xBF\xBD";

TEST(Text, TheLocalFormIsUtf8SoTheConversionsChangeNothing) {
  EXPECT_EQ(_UTF2MBS("Zürich"), "Zürich");
  EXPECT_EQ(_MBS2UTF("Zürich"), "Zürich");
  EXPECT_EQ(_UTF2MBS("bad \xFF byte"), "bad \xFF byte");
}

TEST(Text, WellFormedSequencesOfEveryLengthAreUtf8) {
  EXPECT_TRUE(IsUtf8(""));
  EXPECT_TRUE(IsUtf8("a\xC2\x80\xE0\xA0\x80\xED\x9F\xBF\xF0\x90\x80\x80\xF4\x8F\xBF\xBF"));
}

TEST(Text, OverlongFormsSurrogatesAndNumbersTooLargeAreNotUtf8) {
  for (const char* bad : {"\x80", "\xC0\x80", "\xC1\xBF", "\xE0\x9F\xBF", "\xED\xA0\x80",
                          "\xF0\x8F\xBF\xBF", "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF"}) {
    EXPECT_FALSE(IsUtf8(bad)) << testing::PrintToString(bad);
  }
}

TEST(Text, ASequenceCutByTheEndIsNotUtf8) {
  EXPECT_FALSE(IsUtf8("\xC3"));
  EXPECT_FALSE(IsUtf8("\xE2\x82"));
  EXPECT_FALSE(IsUtf8("\xF0\x9F\x98"));
}

TEST(Text, EachMalformedSequenceIsReplacedOnceAndGoodTextStays) {
  EXPECT_EQ(ReplaceMalformed("plain ü"), "plain ü");
  EXPECT_EQ(ReplaceMalformed("a\xFFz"), std::string("a") + kReplacement + "z");
  EXPECT_EQ(ReplaceMalformed("\xE2\x82z"), std::string(kReplacement) + "z");
  EXPECT_EQ(ReplaceMalformed("\xE2\x82"), kReplacement);
  EXPECT_EQ(ReplaceMalformed("\xC3\xC3\xBC"), std::string(kReplacement) + "ü");
}

TEST(Text, ACutNeverDividesASequence) {
  const std::string text = "aü€😀";  // 1 + 2 + 3 + 4 bytes
  const std::size_t kept[] = {0, 1, 1, 3, 3, 3, 6, 6, 6, 6, 10, 10};
  for (std::size_t bytes = 0; bytes < std::size(kept); ++bytes) {
    EXPECT_EQ(CutUtf8(text, bytes).size(), kept[bytes]) << bytes;
  }
}

TEST(Text, ACutOfBytesThatAreNoUtf8FallsWhereItWasAsked) {
  EXPECT_EQ(CutUtf8("\x80\x80\x80\x80\x80", 3).size(), 3u);
  EXPECT_EQ(CutUtf8("\xFF\xFF\xFF", 2).size(), 2u);
  EXPECT_EQ(CutUtf8("a\xE2\x82zz", 2).size(), 2u);
}

TEST(Text, OnlyTheLettersAToZAreComparedIgnoringCase) {
  EXPECT_EQ(CompareIgnoringCase("TRACE.Trc", "trace.tRC"), 0);
  EXPECT_LT(CompareIgnoringCase("a", "B"), 0);
  EXPECT_GT(CompareIgnoringCase("B", "a"), 0);
  EXPECT_LT(CompareIgnoringCase("ab", "abc"), 0);
  EXPECT_GT(CompareIgnoringCase("abc", "ab"), 0);
  EXPECT_NE(CompareIgnoringCase("Ü", "ü"), 0);
  EXPECT_NE(CompareIgnoringCase("@", "`"), 0);
}

TEST(Text, ToLowerAsciiOnlyTheLettersAToZChange) {
  EXPECT_EQ(ToLowerAscii("AZaz @[`{ Ü \xC1\xFF 09"), "azaz @[`{ Ü \xC1\xFF 09");
  EXPECT_EQ(ToLowerAscii(""), "");
}

TEST(Text, BytesAbove127SortAfterTheLetters) {
  EXPECT_LT(CompareIgnoringCase("z", "\xC3\xBC"), 0);
}

TEST(GroupDigits, StandInThrees) {
  EXPECT_EQ(GroupDigits(0), "0");
  EXPECT_EQ(GroupDigits(999), "999");
  EXPECT_EQ(GroupDigits(1000), "1,000");
  EXPECT_EQ(GroupDigits(28200000), "28,200,000");
  EXPECT_EQ(GroupDigits(18446744073709551615U), "18,446,744,073,709,551,615");
}

}  // namespace
