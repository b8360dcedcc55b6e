#include <gtest/gtest.h>

#include <QLineEdit>
#include <QPainter>

#include "listview/rows/ui/severity_icons.h"
#include "row_list_rig.h"

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

QImage Icon(int icon, int side) {
  QImage image(side, side, QImage::Format_ARGB32);
  image.fill(Qt::transparent);
  QPainter painter(&image);
  PaintSeverityIcon(painter, QRectF(0, 0, side, side), icon);
  return image;
}

}  // namespace

TEST(RowPainting, TheSelectionKeepsItsColourWhenTheKeyboardGoesElsewhere) {
  ShownList s(20);
  QLineEdit other;
  other.show();
  s.list.SetItemState(3, kRowSelected, kRowSelected);
  const QColor before = Background(s, 3);
  EXPECT_EQ(before, Role(s, QPalette::Highlight));
  other.activateWindow();
  other.setFocus();
  ASSERT_TRUE(QTest::qWaitFor([&] { return !s.list.hasFocus(); }));
  EXPECT_EQ(Background(s, 3), before);
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
  ColumnOrder order = s.list.Header().GetColumnOrder();
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
  const QRect next = s.list.CellRect(0, Column::TicCount).adjusted(0, 1, -2, -1);
  EXPECT_EQ(CountPixels(s.Picture(), next, Role(s, QPalette::Base)), next.width() * next.height());
}

TEST(SeverityIcons, AreABlueARedAndAYellowSignAtEveryScale) {
  for (const int side : {16, 32, 24}) {
    const auto at = [side](int icon, double x, double y) {
      return Icon(icon, side).pixelColor(static_cast<int>(x * side), static_cast<int>(y * side));
    };
    EXPECT_GT(at(0, 0.25, 0.5).blue(), at(0, 0.25, 0.5).red() + 60) << side;
    EXPECT_GT(at(1, 0.25, 0.5).red(), at(1, 0.25, 0.5).blue() + 100) << side;
    EXPECT_GT(at(1, 0.25, 0.5).green(), at(1, 0.25, 0.5).blue() + 60) << side;
    EXPECT_GT(at(2, 0.5, 0.25).red(), at(2, 0.5, 0.25).green() + 100) << side;
    EXPECT_GT(at(0, 0.5, 0.6).lightness(), 220) << "a white i";
    EXPECT_LT(at(1, 0.5, 0.4).lightness(), 60) << "a black !";
    for (const int icon : {0, 1, 2}) EXPECT_EQ(at(icon, 0, 0).alpha(), 0) << "the corner is empty";
  }
}

TEST(RowPainting, IconsAreRenderedAtTheScreensScale) {
  SeverityIcons icons;
  EXPECT_EQ(icons.Get(0, 1).width(), 16);
  EXPECT_EQ(icons.Get(0, 2).width(), 32);
  EXPECT_EQ(icons.Get(0, 2).deviceIndependentSize(), QSizeF(16, 16));
}
