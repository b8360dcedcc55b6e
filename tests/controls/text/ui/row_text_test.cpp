#include "controls/text/ui/row_text.h"

#include <gtest/gtest.h>

#include <string>

#include "support/qt_test_main.h"

TEST(CellText, IsCutAt259BytesWhateverTheTracesLength) {
  EXPECT_EQ(CellString(std::string(259, 'a')).size(), 259);
  EXPECT_EQ(CellString(std::string(260, 'a')).size(), 259);
  EXPECT_EQ(CellString(std::string(70000, 'a')).size(), 259);
}

TEST(CellText, IsCutWhereACharacterEnds) {
  const QString text = CellString(std::string(258, 'a') + "\xc3\xa9");
  EXPECT_EQ(text.size(), 258);
  EXPECT_FALSE(text.contains(QChar::ReplacementCharacter));
}

TEST(CellText, BytesThatAreNoUtf8ShowAsReplacementCharacters) {
  const QString text = CellString(
      "a\xff"
      "b");
  EXPECT_EQ(text, QString("a") + QChar(QChar::ReplacementCharacter) + "b");
}

TEST(CellText, LineEndsBecomeOneMarkEachAndOtherControlsABlank) {
  EXPECT_EQ(CellLine("a\nb\r\nc\rd\te\x01"), QString("a%1b%1c%1d e ").arg(kLineEndMark));
  EXPECT_EQ(CellLine("plain"), QString("plain"));
  EXPECT_EQ(CellString("a\nb"), QString("a\nb")) << "the tool tip keeps its lines";
}

using Parts = std::vector<LinePart>;

TEST(CellText, PlacesOfBytesAreFoundInTheLineWhateverStandsBeforeThem) {
  const std::string text = "\xc3\xa4\r\n\xf0\x9f\x98\x80-up\xef\xbb\xbfup";
  const QString line = CellLine(text);
  const Parts parts = LinePartsOf(text, {{9, 11}, {14, 16}});
  ASSERT_EQ(parts.size(), 2U);
  for (const LinePart& part : parts) EXPECT_EQ(line.mid(part.first, part.count), "up");
}

TEST(CellText, ACharacterThatIsHitInItsMiddleCountsWhole) {
  EXPECT_EQ(LinePartsOf("a\xc3\xa4z", {{2, 3}}), (Parts{{1, 1}}));
  EXPECT_EQ(LinePartsOf("a\xc3\xa4z", {{1, 2}}), (Parts{{1, 1}}));
  EXPECT_EQ(LinePartsOf("a\r\nz", {{2, 3}}), (Parts{{1, 1}}));
  EXPECT_EQ(LinePartsOf("a\r\nz", {{1, 2}, {2, 4}}), (Parts{{1, 1}, {2, 1}}));
}

TEST(CellText, AHitAfterTheCutIsNotThereAndOneAcrossItEndsThere) {
  const std::string text(300, 'a');
  EXPECT_EQ(LinePartsOf(text, {{255, 265}, {270, 280}}), (Parts{{255, 4}}));
  EXPECT_EQ(LinePartsOf(text, {{255, 265}, {270, 280}}, 300), (Parts{{255, 10}, {270, 10}}));
}
