// Marks and notes of rows in the list.
#include <gtest/gtest.h>

#include <QAccessible>
#include <QHelpEvent>
#include <QToolTip>

#include "controls/text/ui/mark_painter.h"
#include "notes/mark_colours.h"
#include "row_list_harness.h"
#include "where/colours/colour.h"

namespace {

RowMark MarkOf(int number, const std::string& note = "") {
  return {{kMarkInk, kMarkGrounds[static_cast<std::size_t>(number)]}, number, note};
}

QColor Ground(int number) {
  return QColor(QRgb{kMarkGrounds[static_cast<std::size_t>(number)]});
}

Colour ColourFrom(std::uint32_t rgb) {
  return {static_cast<std::uint8_t>(rgb >> 16), static_cast<std::uint8_t>(rgb >> 8),
          static_cast<std::uint8_t>(rgb)};
}

QRect BoxOf(const ShownList& s, int row) {
  return MarkBox(QFontMetrics(s.list.font()), s.owner.marks.at(row),
                 s.list.RowRect(row).intersected(s.list.viewport()->rect()));
}

int CountOf(const QImage& image, const QRect& area, const QColor& color) {
  int count = 0;
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x) count += image.pixelColor(x, y) == color;
  return count;
}

int LightIn(const QImage& image, const QRect& area) {
  int count = 0;
  for (int y = area.top(); y <= area.bottom(); ++y)
    for (int x = area.left(); x <= area.right(); ++x)
      count += image.pixelColor(x, y).lightness() > 180;
  return count;
}

}  // namespace

TEST(RowMarks, EachColourIsReadableAndStandsOutOnLightAndDark) {
  const Colour white = ColourFrom(0xffffff), dark = ColourFrom(0x1e1f22);
  for (const std::uint32_t ground : kMarkGrounds) {
    EXPECT_GE(Contrast(ColourFrom(kMarkInk), ColourFrom(ground)), kLeastContrast);
    EXPECT_GE(Contrast(ColourFrom(ground), white), 3.0);
    EXPECT_GE(Contrast(ColourFrom(ground), dark), 3.0);
  }
}

TEST(RowMarks, AMarkedRowHasAStripeAndABoxWithItsNumber) {
  ShownList s(20);
  const QImage before = s.Picture();
  s.owner.marks = {{3, MarkOf(1)}, {5, MarkOf(6)}};
  const QImage after = s.Picture();
  for (const auto& [row, number] : {std::pair{3, 1}, std::pair{5, 6}}) {
    const QRect bounds = s.list.RowRect(row);
    EXPECT_EQ(after.pixelColor(1, bounds.center().y()), Ground(number));
    const QRect box = BoxOf(s, row);
    EXPECT_TRUE(bounds.contains(box));
    EXPECT_GT(CountOf(after, box, Ground(number)), box.width() * box.height() / 3);
    EXPECT_GT(LightIn(after, box.adjusted(3, 3, -3, -3)), 4) << "the number";
  }
  EXPECT_EQ(before.copy(s.list.RowRect(4)), after.copy(s.list.RowRect(4)));
}

TEST(RowMarks, TheTextsAndTheIconOfTheRowStayAsTheyAre) {
  ShownList s(20);
  s.owner.icons[3] = 2;
  const QImage before = s.Picture();
  s.owner.marks[3] = MarkOf(4, "note");
  const QImage after = s.Picture();
  QRect between = s.list.RowRect(3).intersected(s.list.viewport()->rect());
  between.setLeft(6);
  between.setRight(BoxOf(s, 3).left() - kMarkGapPx - 1);
  EXPECT_EQ(before.copy(between), after.copy(between));
}

TEST(RowMarks, ALongTextEndsBeforeTheBoxWithAGap) {
  for (const bool selected : {false, true}) {
    ShownList s(20);
    for (int column = 0; column < 15; ++column) s.owner.texts[{3, column}] = std::string(250, 'W');
    s.owner.marks[3] = MarkOf(4, "note");
    if (selected) s.list.SetItemState(3, kRowSelected | kRowFocused, kRowSelected | kRowFocused);
    const QImage picture = s.Picture();
    const QRect box = BoxOf(s, 3);
    const QRect gap(box.left() - kMarkGapPx, box.top() + 1, kMarkGapPx, box.height() - 2);
    const QColor ground = picture.pixelColor(gap.topLeft());
    EXPECT_EQ(CountOf(picture, gap, ground), gap.width() * gap.height()) << selected;
    EXPECT_LT(CountOf(picture, gap.translated(-3 * kMarkGapPx, 0), ground),
              gap.width() * gap.height())
        << "a text stands before it";
    if (selected) continue;  // the frame of the focus stands there
    const QRect behind(box.right() + 1, gap.top(), s.list.viewport()->width() - box.right() - 1,
                       gap.height());
    EXPECT_EQ(CountOf(picture, behind, ground), behind.width() * behind.height());
  }
}

TEST(RowMarks, AreSeenOnASelectedRowAndAtTheEndOfAScrolledOne) {
  ShownList s(20);
  s.owner.marks[3] = MarkOf(8);
  s.list.SetItemState(3, kRowSelected | kRowFocused, kRowSelected | kRowFocused);
  s.list.resize(200, s.list.height());
  QApplication::processEvents();
  for (const int left : {0, 300}) {
    s.list.horizontalScrollBar()->setValue(left);
    const QImage picture = s.Picture();
    EXPECT_EQ(picture.pixelColor(1, s.list.RowRect(3).center().y()), Ground(8)) << left;
    const QRect box = BoxOf(s, 3);
    EXPECT_TRUE(s.list.viewport()->rect().contains(box));
    EXPECT_GT(CountOf(picture, box, Ground(8)), 20) << left;
  }
}

TEST(RowMarks, ARowThatTheEdgeCutsShowsTheUpperPartOfItsBox) {
  ShownList s(20);
  s.list.resize(s.list.width(), s.list.height() + s.list.RowHeight() / 2);
  QApplication::processEvents();
  for (const int row : {4, 10}) {
    s.owner.marks[row] = MarkOf(3, "look");
    for (int column = 0; column < 15; ++column) s.owner.texts[{row, column}] = "";
  }
  const QImage picture = s.Picture();
  QRect whole = s.list.RowRect(4), cut = s.list.RowRect(10);
  whole.setHeight(s.list.RowHeight() / 2);
  cut.setHeight(s.list.RowHeight() / 2);
  ASSERT_TRUE(s.list.viewport()->rect().bottom() >= cut.bottom() - 1);
  cut.setBottom(s.list.viewport()->rect().bottom());
  whole.setHeight(cut.height());
  EXPECT_EQ(picture.copy(whole), picture.copy(cut));
}

TEST(RowMarks, ANoteAloneHasASignAndNoStripe) {
  ShownList s(20);
  const QColor edge = s.Picture().pixelColor(1, s.list.RowRect(2).center().y());
  s.owner.marks[2] = MarkOf(0, "look");
  const QImage picture = s.Picture();
  EXPECT_EQ(picture.pixelColor(1, s.list.RowRect(2).center().y()), edge);
  EXPECT_GT(CountOf(picture, BoxOf(s, 2), Qt::white), 6) << "the lines of the sheet";
}

TEST(RowMarks, ALargeFontHasALargeBoxInsideItsRow) {
  ShownList s(20);
  s.owner.marks[2] = MarkOf(3, "look");
  const int before = BoxOf(s, 2).width();
  QFont large = s.list.font();
  large.setPointSizeF(large.pointSizeF() * 2);
  s.list.setFont(large);
  QApplication::processEvents();
  EXPECT_GT(BoxOf(s, 2).width(), before * 3 / 2);
  EXPECT_TRUE(s.list.RowRect(2).contains(BoxOf(s, 2)));
}

TEST(RowMarks, TheNoteIsTheToolTipAndAScreenReaderHearsIt) {
  ShownList s(20);
  s.owner.marks[2] = MarkOf(3, "first <b>\nsecond");
  const QPoint at = s.list.CellRect(2, Column::Count).center();
  QHelpEvent event(QEvent::ToolTip, at, s.list.viewport()->mapToGlobal(at));
  QApplication::sendEvent(s.list.viewport(), &event);
  EXPECT_TRUE(QToolTip::text().contains("first &lt;b&gt;\nsecond"))
      << QToolTip::text().toStdString();
  QAccessibleTableInterface* const table =
      QAccessible::queryAccessibleInterface(&s.list)->tableInterface();
  EXPECT_TRUE(table->cellAt(2, 1)
                  ->text(QAccessible::Description)
                  .endsWith("Mark 3, Note: first <b> second"));
  EXPECT_FALSE(table->cellAt(1, 1)->text(QAccessible::Description).contains("Mark"));
}

TEST(RowMarks, DeleteGoesToTheOwnerOrToTheWindow) {
  ShownList s(20);
  s.Key(Qt::Key_Delete);
  EXPECT_TRUE(s.owner.Reported().empty());
  s.owner.takesDelete = true;
  s.Key(Qt::Key_Delete);
  EXPECT_EQ(s.owner.Reported(), std::vector<std::string>{"delete"});
}
