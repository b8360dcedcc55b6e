#include <gtest/gtest.h>

#include "row_list_harness.h"

TEST(RowScrolling, HundredMillionRowsScrollSelectAndTrimLikeTen) {
  constexpr int kRows = 100'000'000;
  ShownList s(kRows);
  s.Key(Qt::Key_End);
  EXPECT_EQ(s.list.TopIndex(), kRows - 10);
  EXPECT_EQ(s.list.RowAt(s.At(kRows - 1).y()), kRows - 1);
  s.list.SetItemState(-1, kRowSelected, kRowSelected);
  EXPECT_EQ(s.list.SelectedCount(), kRows);
  s.owner.Reported();
  for (int trim = 0; trim < 1000; ++trim) s.list.DeleteRows(0, 100);
  EXPECT_EQ(s.list.SelectedCount(), kRows - 100'000);
  EXPECT_EQ(s.States(), "0-99899999 f99899999");
  s.owner.asked = 0;
  s.Picture();
  EXPECT_LE(s.owner.asked, 11 * 14);
}

TEST(RowScrolling, AtTheEndASmallerWindowStaysThere) {
  ShownList s(100, 20);
  s.list.EnsureVisible(99);
  s.SetPage(10);
  EXPECT_EQ(s.list.TopIndex(), 90);
}

TEST(RowScrolling, ASmallerWindowElsewhereKeepsItsFirstRow) {
  ShownList s(100, 20);
  s.list.EnsureVisible(50);
  s.SetPage(10);
  EXPECT_EQ(s.list.TopIndex(), 31);
}

TEST(RowScrolling, ALargerWindowShowsNoRoomBelowTheLastRow) {
  ShownList s(100);
  s.list.EnsureVisible(99);
  s.SetPage(30);
  EXPECT_EQ(s.list.TopIndex(), 70);
}

TEST(RowScrolling, ARowThatShowsOnlyPartlyDoesNotCountAsOnThePage) {
  ShownList s(100);
  s.list.resize(s.list.width(), s.list.height() + s.list.RowHeight() / 2);
  EXPECT_EQ(s.list.CountPerPage(), 10);
  s.list.EnsureVisible(10);
  EXPECT_EQ(s.list.TopIndex(), 1);
}

TEST(RowScrolling, ALargerFontMakesHigherRows) {
  ShownList s(100, 20);
  const int before = s.list.RowHeight();
  QFont font = s.list.font();
  font.setPointSize(24);
  s.list.setFont(font);
  EXPECT_GT(s.list.RowHeight(), before);
  EXPECT_LT(s.list.CountPerPage(), 20);
}

TEST(RowScrolling, ScrollingAcrossMovesHeaderAndRowsTogether) {
  ShownList s(10);
  s.list.resize(300, s.list.height());
  QApplication::processEvents();
  s.list.horizontalScrollBar()->setValue(100);
  EXPECT_EQ(s.list.Columns().ColumnLeft(Column::Count), 60 - 100);
  EXPECT_EQ(s.list.CellRect(0, Column::Count).left(), 60 - 100);
  EXPECT_EQ(s.list.Columns().offset(), 100);
}

TEST(RowScrolling, TheHeaderStandsAboveTheRows) {
  ShownList s(10);
  const RowHeader& header = s.list.Columns();
  EXPECT_EQ(header.geometry().bottom() + 1, s.list.viewport()->geometry().top());
  EXPECT_EQ(header.width(), s.list.viewport()->width());
  EXPECT_GT(header.height(), 10);
}
