#include "controls/text/ui/font_runs.h"

#include <gtest/gtest.h>

#include "row_list_harness.h"

namespace {

// The runs of a line, with bars between them.
std::string Runs(const QString& line) {
  QString text;
  qsizetype begin = 0;
  for (const qsizetype end : FontRuns(line)) {
    text += (begin ? QStringLiteral("|") : QString()) + line.mid(begin, end - begin);
    begin = end;
  }
  return text.toStdString();
}

std::string Runs(const char* line) {
  return Runs(QString::fromUtf8(line));
}

}  // namespace

TEST(FontRuns, DigitsAndBlanksBesideWideLettersAreRunsOfTheirOwn) {
  EXPECT_EQ(Runs("plain 123"), "plain 123");
  EXPECT_EQ(Runs("測試123"), "測試|123");
  EXPECT_EQ(Runs("id 42 測試 7"), "id 42 |測試| 7");
  EXPECT_EQ(Runs("カナ1한2。3"), "カナ|1|한|2|。|3");
  EXPECT_EQ(Runs("𠀋1"), "𠀋|1") << "a letter of two halves";
  EXPECT_EQ(Runs("a😀b"), "a😀b");
  EXPECT_EQ(Runs("か\u3099x"), "か\u3099|x") << "a mark stays with its letter";
  EXPECT_EQ(Runs(""), "");
}

TEST(FontRuns, ALineWithRightToLeftLettersStaysWhole) {
  EXPECT_EQ(Runs("سلام 測試 12"), "سلام 測試 12");
}

TEST(FontRuns, AWideLineIsCutWhereItFitsWithItsDots) {
  ShownList s(1);
  const QFontMetrics metrics = s.list.fontMetrics();
  const QString line = QString::fromUtf8("測試12345測試67890測試");
  EXPECT_EQ(ElidedLine(metrics, line, LineWidth(metrics, line)), line);
  for (const int room : {200, 120, 60, 40}) {
    const QString cut = ElidedLine(metrics, line, room);
    if (LineWidth(metrics, line) <= room) continue;
    EXPECT_LE(LineWidth(metrics, cut), room);
    EXPECT_TRUE(cut.endsWith(QChar(0x2026)));
    const QString longer = line.left(cut.size()) + QChar(0x2026);
    EXPECT_GT(LineWidth(metrics, longer), room) << "one letter more would not fit";
  }
}

TEST(FontRuns, DigitsAfterWideLettersLookLikeDigitsElsewhereOnTheSameBaseLine) {
  ShownList s(3, 3, 200);
  const QString wide = QString::fromUtf8("測試");
  // The last column draws from the left.
  s.owner.texts[{0, Column::Time}] = (wide + "0123456789").toStdString();
  s.owner.texts[{2, Column::Time}] = "0123456789";
  const QFontMetrics metrics = s.list.fontMetrics();
  const int widePx = metrics.horizontalAdvance(wide),
            digitsPx = metrics.horizontalAdvance("0123456789");
  const QImage picture = s.Picture();
  const QRect first = s.list.CellRect(0, Column::Time), third = s.list.CellRect(2, Column::Time);
  const int left = first.left() + RowHeader::kCellMarginPx;
  const QImage behind = picture.copy(left + widePx, first.top(), digitsPx, first.height());
  const QImage alone = picture.copy(left, third.top(), digitsPx, third.height());
  EXPECT_EQ(behind, alone);
}
