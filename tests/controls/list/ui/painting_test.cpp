#include <gtest/gtest.h>

#include <QAbstractButton>
#include <QLineEdit>
#include <QPainter>

#include "row_list_harness.h"

namespace {

QColor Role(const ShownList& s, QPalette::ColorRole role) {
  return s.list.palette().color(QPalette::Active, role);
}

// Where no text is: the left margin of the column "Count".
QColor Background(ShownList& s, int row) {
  return s.Picture().pixelColor(s.list.Columns().ColumnLeft(Column::Count) + 2,
                                s.list.RowRect(row).center().y());
}

int CountPixels(const QImage& image, const QRect& area, const QColor& color) {
  int count = 0;
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x)
      if (image.pixelColor(x, y) == color) ++count;
  return count;
}

// What of the area is not in that colour.
QRect InkOf(const QImage& image, const QRect& area, const QColor& paper) {
  QRect ink;
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x)
      if (image.pixelColor(x, y) != paper) ink |= QRect(x, y, 1, 1);
  return ink;
}

}  // namespace

TEST(RowPainting, TheSelectionIsPalerWhenTheKeyboardIsElsewhereAndStaysPlainToSee) {
  ShownList s(20);
  QLineEdit other;
  other.show();
  s.list.SetItemState(3, kRowSelected, kRowSelected);
  EXPECT_EQ(Background(s, 3), Role(s, QPalette::Highlight));
  other.activateWindow();
  other.setFocus();
  ASSERT_TRUE(QTest::qWaitFor([&] { return !s.list.hasFocus(); }));
  const int base = Role(s, QPalette::Base).lightness();
  const int full = Role(s, QPalette::Highlight).lightness();
  EXPECT_LT(Background(s, 3).lightness(), base - 15);
  EXPECT_GT(Background(s, 3).lightness(), full + 40);
}

TEST(RowPainting, RowsThatAreNotSelectedHaveSubtleStripes) {
  ShownList s(20);
  EXPECT_EQ(Background(s, 0), Role(s, QPalette::Base));
  EXPECT_NE(Background(s, 1), Background(s, 0));
  EXPECT_LT(std::abs(Background(s, 1).lightness() - Background(s, 0).lightness()), 20);
}

TEST(RowPainting, StripesStayWithTheirRowsWhenRowsAreTrimmedBeforeThem) {
  ShownList s(100);
  s.list.EnsureVisible(59);
  const QColor first = Background(s, 50);
  s.list.DeleteRows(0, 3);
  EXPECT_EQ(s.list.TopIndex(), 47);
  EXPECT_EQ(Background(s, 47), first);
}

TEST(RowPainting, TheFocusHasAFrameOfItsOwn) {
  ShownList s(20);
  const QImage before = s.Picture();
  s.list.SetItemState(3, kRowFocused, kRowFocused);
  const QImage after = s.Picture();
  const QRect row = s.list.RowRect(3);
  EXPECT_NE(before.copy(row), after.copy(row));
  EXPECT_EQ(Background(s, 3),
            before.pixelColor(s.list.Columns().ColumnLeft(Column::Count) + 2, row.center().y()))
      << "a focus alone is no selection";
}

TEST(RowPainting, ARowThatIsFocusedAloneHasAMarkAtItsBeginning) {
  ShownList s(20);
  const QRect row = s.list.RowRect(4);
  const QPoint edge(2, row.center().y());
  const QColor before = s.Picture().pixelColor(edge);
  s.list.SetItemState(4, kRowFocused, kRowFocused);
  const QColor mark = s.Picture().pixelColor(edge);
  EXPECT_LT(mark.lightness(), before.lightness() - 60);
  EXPECT_EQ(s.Picture().pixelColor(200, row.top() + 1), mark) << "the frame is two pixels thick";
  EXPECT_EQ(s.Picture().pixelColor(200, row.bottom()), mark);
}

TEST(RowPainting, RowsOfWarningsAndErrorsHaveAVeryPaleTint) {
  for (const bool dark : {false, true}) {
    ShownList s(20);
    if (dark) {
      QPalette palette;
      palette.setColor(QPalette::Base, QColor(30, 31, 34));
      palette.setColor(QPalette::Text, QColor(230, 230, 230));
      s.list.setPalette(palette);
    }
    s.owner.tints = {{2, RowTint::Warn}, {4, RowTint::Error}, {6, RowTint::Error}};
    s.list.SetItemState(6, kRowSelected, kRowSelected);
    const QColor plain = Background(s, 0), warn = Background(s, 2), error = Background(s, 4);
    EXPECT_GT(warn.red() - warn.blue(), 10);
    EXPECT_GT(error.red() - error.green(), 10);
    for (const QColor& tint : {warn, error})
      EXPECT_LT(std::abs(tint.lightness() - plain.lightness()), 25) << "it stays a hint";
    EXPECT_EQ(Background(s, 6), Role(s, QPalette::Highlight)) << "a selection is not tinted";
  }
}

TEST(RowPainting, ARowInColoursHasNoTintAndNoStripeAndASelectionItsOwnColours) {
  ShownList s(20);
  constexpr RowColours kColours{0x003f6f, 0xd7eeff};
  s.owner.colours = {{1, kColours}, {2, kColours}, {3, kColours}};
  s.owner.tints = {{2, RowTint::Error}, {3, RowTint::Error}};
  s.list.SetItemState(3, kRowSelected, kRowSelected);
  const QColor ground(0xd7, 0xee, 0xff);
  EXPECT_EQ(Background(s, 1), ground) << "a row with a stripe";
  EXPECT_EQ(Background(s, 2), ground) << "a row with a tint";
  EXPECT_EQ(Background(s, 3), Role(s, QPalette::Highlight));
  EXPECT_FALSE(s.owner.painting);
  const RowLook look = LookOf(s.list.palette(), {.tint = RowTint::Warn, .colours = kColours});
  EXPECT_EQ(look.text, QColor(0x00, 0x3f, 0x6f));
}

TEST(RowPainting, WhatASearchHasFoundIsTintedInTheTextAndNothingElse) {
  ShownList s(20, 10, 120);
  s.owner.texts[{1, Column::Count}] = "say hello to all";
  s.owner.hits[{1, Column::Count}] = {{4, 9}};
  const QRect cell = s.list.CellRect(1, Column::Count);
  const QFontMetrics metrics = s.list.fontMetrics();
  const QImage picture = s.Picture();
  // The column is right-aligned.
  const int begin = cell.right() + 1 - RowHeader::kCellMarginPx -
                    metrics.horizontalAdvance("say hello to all") +
                    metrics.horizontalAdvance("say ");
  const int end = begin + metrics.horizontalAdvance("hello");
  const int y = cell.top() + 3;
  const QColor tint = picture.pixelColor((begin + end) / 2, y);
  EXPECT_GT(tint.red() - tint.blue(), 60);
  EXPECT_EQ(picture.pixelColor(begin, y), tint);
  EXPECT_EQ(picture.pixelColor(end - 1, y), tint);
  EXPECT_NE(picture.pixelColor(begin - 1, y), tint);
  EXPECT_NE(picture.pixelColor(end, y), tint);
  EXPECT_EQ(CountPixels(picture, s.list.RowRect(2), tint), 0);
}

TEST(RowPainting, AHitAfterLettersOfSeveralBytesAndALineEndStandsWhereItIsRead) {
  ShownList s(20, 10, 200);
  s.owner.texts[{1, Column::Trace}] = "\xc3\xa4\xc3\xb6\r\nhello";
  s.owner.hits[{1, Column::Trace}] = {{6, 11}};
  const QRect cell = s.list.CellRect(1, Column::Trace);
  s.list.horizontalScrollBar()->setValue(0);
  s.list.resize(3200, s.list.height());
  const QImage picture = s.Picture();
  const int before = s.list.fontMetrics().horizontalAdvance(QString::fromUtf8("\xc3\xa4\xc3\xb6")) +
                     s.list.fontMetrics().horizontalAdvance(QChar(0x23CE));
  const int begin = s.list.CellRect(1, Column::Trace).left() + RowHeader::kCellMarginPx + before;
  const QColor tint = picture.pixelColor(begin + 5, cell.top() + 3);
  EXPECT_GT(tint.red() - tint.blue(), 60);
  EXPECT_EQ(picture.pixelColor(begin, cell.top() + 3), tint);
  EXPECT_NE(picture.pixelColor(begin - 1, cell.top() + 3), tint);
}

TEST(RowPainting, AnEmptyListSaysWhatItWaitsForAndWhy) {
  ShownList s(0);
  const QImage blank = s.Picture();
  s.owner.emptyText = "Waiting for traces\nbecause";
  s.list.Repaint();
  const QImage picture = s.Picture();
  EXPECT_NE(picture, blank);
  const QRect middle(picture.rect().center() - QPoint(80, 30), QSize(160, 60));
  EXPECT_NE(picture.copy(middle), blank.copy(middle));
  s.owner.emptyText = "Waiting for traces";
  EXPECT_NE(s.Picture(), picture) << "the second line has gone";
  s.list.SetItemCount(1);
  const QImage one = s.Picture();
  s.owner.emptyText = "";
  EXPECT_EQ(s.Picture(), one) << "with a row nothing of it is left";
}

TEST(RowPainting, AnEmptyListThatGetsItsFirstRowIsPaintedAnew) {
  ShownList s(0);
  s.owner.emptyText = "Waiting for traces";
  QApplication::processEvents();
  s.owner.asked = 0;
  s.list.SetItemCount(1);
  QApplication::processEvents();
  EXPECT_GT(s.owner.asked, 0);
}

TEST(RowEndMark, ALiveListAtItsEndHasALineBelowItsLastRow) {
  ShownList s(5);
  const QRect last = s.list.RowRect(4);
  const QPoint below(100, last.bottom() + 1);
  const QColor without = s.Picture().pixelColor(below);
  s.list.ShowEndMark(true);
  const QColor mark = s.Picture().pixelColor(below);
  EXPECT_NE(mark, without);
  s.list.SetItemCount(50);
  EXPECT_NE(s.Picture().pixelColor(100, s.list.viewport()->height() - 1), mark) << "not at its end";
  s.list.EnsureVisible(49);
  EXPECT_EQ(s.Picture().pixelColor(100, s.list.viewport()->height() - 1), mark);
}

TEST(RowEndMark, OneClickLeadsBackToTheEnd) {
  ShownList s(5000);
  auto* const toEnd = s.list.findChild<QAbstractButton*>("toEnd");
  ASSERT_TRUE(toEnd);
  EXPECT_FALSE(toEnd->isVisible()) << "a list that is not live has none";
  s.list.ShowEndMark(true);
  EXPECT_TRUE(toEnd->isVisible());
  EXPECT_TRUE(toEnd->text().endsWith("4,990 more")) << toEnd->text().toStdString();
  EXPECT_TRUE(s.list.rect().contains(toEnd->geometry()));
  s.list.EnsureVisible(2999);
  EXPECT_TRUE(toEnd->text().endsWith("2,000 more"));
  s.list.SetItemCount(5001);
  EXPECT_TRUE(toEnd->text().endsWith("2,001 more"));
  s.list.resize(s.list.width() - 100, s.list.height());
  QApplication::processEvents();
  EXPECT_TRUE(s.list.viewport()->geometry().contains(toEnd->geometry()));
  QTest::mouseClick(toEnd, Qt::LeftButton);
  EXPECT_GE(s.list.TopIndex() + s.list.CountPerPage(), 5001);
  EXPECT_FALSE(toEnd->isVisible());
  EXPECT_TRUE(s.list.hasFocus()) << "the keyboard stays with the rows";
  EXPECT_EQ(s.States(), "f-1");
}

TEST(RowPainting, DarkColoursAreThePalettes) {
  ShownList s(20);
  QPalette dark;
  dark.setColor(QPalette::Base, QColor(20, 20, 20));
  dark.setColor(QPalette::Text, QColor(230, 230, 230));
  s.list.setPalette(dark);
  EXPECT_EQ(Background(s, 0), QColor(20, 20, 20));
  EXPECT_GT(CountPixels(s.Picture(), s.list.CellRect(0, Column::Count), QColor(230, 230, 230)), 0);
}

TEST(RowPainting, TheIconStandsInTheColumnSevWhereverThatIsOnTheScreen) {
  ShownList s(20);
  s.owner.icons[0] = 2;
  ListOrder order = s.list.Header().GetColumnOrder();
  std::swap(order[0], order[4]);
  s.list.Header().SetColumnOrder(order);
  const QRect cell = s.list.CellRect(0, Column::Sev);
  EXPECT_EQ(cell.left(), 4 * 60);
  const QColor middle = s.Picture().pixelColor(cell.center() - QPoint(0, 5));
  EXPECT_GT(middle.red(), 150);
  EXPECT_LT(middle.green(), 120);
}

TEST(RowPainting, ARowWithoutAKnownSeverityHasNoIcon) {
  ShownList s(20);
  s.owner.icons[0] = 7;
  const QRect cell = s.list.CellRect(0, Column::Sev).adjusted(1, 1, -2, -1);
  EXPECT_EQ(CountPixels(s.Picture(), cell, Role(s, QPalette::Base)), cell.width() * cell.height());
}

TEST(RowPainting, OnlyCellsOnViewAreAskedFor) {
  ShownList s(1'000'000);
  s.owner.asked = 0;
  s.Picture();
  EXPECT_LE(s.owner.asked, 11 * 14);
  EXPECT_GE(s.owner.asked, 10 * 14);
}

TEST(RowPainting, AHiddenColumnIsNotAskedFor) {
  ShownList s(10);
  for (const ColumnInfo& column : kColumns) s.list.Header().SetColumnWidth(column.column, 0);
  s.owner.asked = 0;
  s.Picture();
  EXPECT_EQ(s.owner.asked, 0);
}

TEST(RowPainting, NewRowsBelowTheViewRepaintNothing) {
  ShownList s(100);
  s.Picture();
  QApplication::processEvents();
  s.owner.asked = 0;
  s.list.SetItemCount(5000);
  QApplication::processEvents();
  EXPECT_EQ(s.owner.asked, 0);
  EXPECT_EQ(s.list.TopIndex(), 0);
}

TEST(RowPainting, RowsTrimmedAboveTheViewRepaintNothing) {
  ShownList s(5000);
  s.list.EnsureVisible(3000);
  QApplication::processEvents();
  const QImage before = s.Picture();
  s.owner.asked = 0;
  s.list.DeleteRows(0, 100);
  QApplication::processEvents();
  EXPECT_EQ(s.owner.asked, 0);
  EXPECT_EQ(s.list.TopIndex(), 2891);
}

TEST(RowPainting, WhileRedrawingIsOffNothingIsPaintedAndThenAll) {
  ShownList s(50);
  QApplication::processEvents();
  s.list.SetRedraw(false);
  s.owner.asked = 0;
  s.list.SetItemCount(0);
  s.list.SetItemCount(60);
  s.list.EnsureVisible(59);
  QApplication::processEvents();
  EXPECT_EQ(s.owner.asked, 0);
  s.list.SetRedraw(true);
  QApplication::processEvents();
  EXPECT_GE(s.owner.asked, 10 * 14);
}

TEST(RowPainting, ALongTextEndsInDotsInsideItsCell) {
  ShownList s(3);
  s.owner.texts[{0, Column::Count}] = std::string(200, 'w');
  s.owner.texts[{0, Column::TicCount}] = "";
  const QRect cell = s.list.CellRect(0, Column::Count);
  const QRect next = s.list.CellRect(0, Column::TicCount).adjusted(0, 1, -2, -1);
  const QImage picture = s.Picture();
  const QColor base = Role(s, QPalette::Base);
  EXPECT_EQ(CountPixels(picture, next, base), next.width() * next.height());
  // Letters fill the cell's upper half up to the dots, which stand only on the line of the text.
  const int dots = s.list.fontMetrics().horizontalAdvance(QChar(0x2026));
  const QRect ink = InkOf(picture, cell.adjusted(0, 1, -2, -1), base);
  EXPECT_GT(ink.width(), cell.width() - 4 * RowHeader::kCellMarginPx - dots);
  const QRect letters = InkOf(picture, ink.adjusted(0, 0, -dots - 1, 0), base);
  const QRect end = InkOf(picture, ink.adjusted(ink.width() - dots / 2, 0, 0, 0), base);
  EXPECT_LT(end.height(), letters.height() / 2) << "a dot";
}
