#include "listview/rows/ui/row_text.h"

#include <gtest/gtest.h>

#include <string>

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
