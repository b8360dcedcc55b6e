#include <gtest/gtest.h>

#include "row_list_harness.h"

namespace {

RowHeader& HeaderOf(ShownList& s) {
  return static_cast<RowHeader&>(s.list.Header());
}

// On the right edge of the column.
QPoint Edge(ShownList& s, Column column) {
  RowHeader& header = HeaderOf(s);
  return QPoint(header.ColumnLeft(column) + header.ColumnWidth(column) - 1, header.height() / 2);
}

void Mouse(ShownList& s, QEvent::Type type, QPoint at) {
  QWidget* target = HeaderOf(s).viewport();
  const bool release = type == QEvent::MouseButtonRelease;
  QMouseEvent event(type, at, target->mapToGlobal(at),
                    type == QEvent::MouseMove ? Qt::NoButton : Qt::LeftButton,
                    release ? Qt::NoButton : Qt::LeftButton, Qt::NoModifier);
  QApplication::sendEvent(target, &event);
}

// Drags from a point through others and lets go at the last.
void Drag(ShownList& s, QPoint from, const std::vector<int>& steps) {
  Mouse(s, QEvent::MouseButtonPress, from);
  QPoint at = from;
  for (const int step : steps) Mouse(s, QEvent::MouseMove, at = from + QPoint(step, 0));
  Mouse(s, QEvent::MouseButtonRelease, at);
}

using Resized = std::vector<std::pair<ListColumn, int>>;

}  // namespace

TEST(RowHeaderDrag, EveryStepIsAskedForAndOnlyTheEndIsReported) {
  ShownList s(5);
  Drag(s, Edge(s, Column::Count), {5, 10, 20});
  EXPECT_EQ(s.owner.asking, (std::vector<int>{65, 70, 80}));
  EXPECT_EQ(s.owner.resized, (Resized{{Column::Count, 80}}));
  EXPECT_EQ(s.list.Header().ColumnWidth(Column::Count), 80);
  EXPECT_EQ(s.list.Header().ColumnWidth(Column::TicCount), 60) << "the others stay";
}

TEST(RowHeaderDrag, AWidthBelow16PixelsIsRefusedAndDoesNotMove) {
  ShownList s(5);
  Drag(s, Edge(s, Column::Count), {-40, -50, -59});
  EXPECT_EQ(s.owner.asking, (std::vector<int>{20, 10, 1}));
  EXPECT_EQ(s.list.Header().ColumnWidth(Column::Count), 20);
  EXPECT_EQ(s.owner.resized, (Resized{{Column::Count, 20}}));
}

TEST(RowHeaderDrag, ADragRefusedFromBeginningToEndTellsNothing) {
  ShownList s(5);
  Drag(s, Edge(s, Column::Count), {-50, -55});
  EXPECT_EQ(s.list.Header().ColumnWidth(Column::Count), 60);
  EXPECT_EQ(s.owner.resized, Resized{});
}

TEST(RowHeaderDrag, ARefusedStepComesBackWhenTheMouseDoes) {
  ShownList s(5);
  Drag(s, Edge(s, Column::Count), {-50, -20});
  EXPECT_EQ(s.owner.resized, (Resized{{Column::Count, 40}}));
}

TEST(RowHeaderDrag, AHiddenColumnCannotBeDraggedOpen) {
  ShownList s(5);
  s.list.Header().SetColumnWidth(Column::TicCount, 0);
  Drag(s, Edge(s, Column::Count) + QPoint(2, 0), {30});
  EXPECT_EQ(s.list.Header().ColumnWidth(Column::TicCount), 0);
  EXPECT_EQ(s.owner.resized, (Resized{{Column::Count, 90}})) << "the shown neighbour has the edge";
}

TEST(RowHeaderDrag, AColumnDroppedElsewhereIsReportedOnceAndKeepsItsIndex) {
  ShownList s(5);
  RowHeader& header = HeaderOf(s);
  const QPoint inCount(header.ColumnLeft(Column::Count) + 30, header.height() / 2);
  Drag(s, inCount, {30, 100, 160});
  EXPECT_EQ(s.owner.reordered, 1);
  const ListOrder order = s.list.Header().GetColumnOrder();
  EXPECT_EQ(order[0], 0);
  EXPECT_NE(order[1], 1);
  EXPECT_EQ(PermutationOf(order, kColumnCount), order);
  EXPECT_EQ(s.owner.resized, Resized{});
}

TEST(RowHeaderDrag, AColumnDroppedWhereItWasIsNotReported) {
  ShownList s(5);
  RowHeader& header = HeaderOf(s);
  Drag(s, QPoint(header.ColumnLeft(Column::Count) + 30, header.height() / 2), {3});
  EXPECT_EQ(s.owner.reordered, 0);
}

TEST(RowHeaderFit, ADoubleClickOnTheEdgeFitsTheColumnToWhatIsOnView) {
  ShownList s(1000);
  s.owner.texts[{3, Column::Count}] = "a text that is wider than the column was";
  s.owner.texts[{500, Column::Count}] = std::string(200, 'w');
  const int wanted = s.list.Header().StringWidth(s.owner.texts[{3, Column::Count}]);
  Mouse(s, QEvent::MouseButtonDblClick, Edge(s, Column::Count));
  Mouse(s, QEvent::MouseButtonRelease, Edge(s, Column::Count));
  EXPECT_EQ(s.list.Header().ColumnWidth(Column::Count), wanted);
  EXPECT_EQ(s.owner.resized, (Resized{{Column::Count, wanted}}));
  EXPECT_EQ(s.owner.asking, std::vector<int>{wanted});
}

TEST(RowHeaderFit, AnEmptyListFitsTheHeadersText) {
  ShownList s(0);
  Mouse(s, QEvent::MouseButtonDblClick, Edge(s, Column::Application));
  EXPECT_EQ(s.list.Header().ColumnWidth(Column::Application),
            s.list.Header().StringWidth("Application"));
}

TEST(RowHeader, SaysTheColumnsNamesAndFollowsTheirAlignment) {
  ShownList s(1);
  const QAbstractItemModel* model = HeaderOf(s).model();
  for (const ColumnInfo& column : kColumns) {
    const int section = static_cast<int>(column.column);
    EXPECT_EQ(model->headerData(section, Qt::Horizontal).toString(), column.header);
    const int align = model->headerData(section, Qt::Horizontal, Qt::TextAlignmentRole).toInt();
    EXPECT_EQ((align & Qt::AlignRight) != 0, column.align == ColumnAlign::Right) << column.header;
    EXPECT_EQ((align & Qt::AlignHCenter) != 0, column.align == ColumnAlign::Centre)
        << column.header;
  }
}

TEST(RowHeader, AClickOnItSortsNothingAndSelectsNothing) {
  ShownList s(5);
  s.Click(2);
  s.owner.Reported();
  RowHeader& header = HeaderOf(s);
  const QPoint at(header.ColumnLeft(Column::Count) + 30, header.height() / 2);
  Drag(s, at, {});
  EXPECT_EQ(s.owner.Reported().size(), 0u);
  EXPECT_EQ(s.States(), "2 f2");
}

TEST(RowHeader, AWidthThatCodeSetsMayBeLargerThanTheWindowAndThenItScrolls) {
  ShownList s(5);
  s.list.Header().SetColumnWidth(Column::Trace, 65535);
  EXPECT_EQ(s.list.Header().ColumnWidth(Column::Trace), 65535);
  EXPECT_GT(s.list.horizontalScrollBar()->maximum(), 60000);
}

TEST(RowHeader, AColumnIsShownAsWideAsItsName) {
  ShownList s(0);
  const int width = s.list.Header().StringWidth("Application");
  EXPECT_GE(width,
            s.list.fontMetrics().horizontalAdvance("Application") + 2 * RowHeader::kCellMarginPx);
}

TEST(RowHeader, AColumnOfSoManyCharactersShowsAsManyDigitsWhole) {
  ShownList s(0);
  EXPECT_GE(10 * s.list.Header().AverageCharWidth() + 16,
            s.list.Header().StringWidth("0123456789"));
  EXPECT_GE(18 * s.list.Header().AverageCharWidth() + 16,
            s.list.Header().StringWidth("888888888888888888"));
}

TEST(RowHeader, TheLastShownColumnDrawsIntoTheFreeRoomAndItsWidthStays) {
  ShownList s(20);
  s.owner.texts[{0, Column::Stack}] =
      "a text that is far wider than the sixty pixels of its column";
  const int whole = s.list.Header().FitWidth(Column::Stack);
  s.list.resize(14 * 60 + whole + 40, s.list.height());
  QApplication::processEvents();
  EXPECT_EQ(s.list.Header().ColumnWidth(Column::Stack), 60);
  EXPECT_EQ(s.list.CellRect(0, Column::Stack).right(), s.list.viewport()->width() - 1);
  EXPECT_EQ(s.list.horizontalScrollBar()->maximum(), 0);
  const int beyond = s.list.Columns().ColumnLeft(Column::Stack) + 70;
  EXPECT_EQ(s.list.ColumnAt(beyond), Column::Stack);
  const QRect right(beyond, s.list.RowRect(0).top() + 1, whole - 80, s.list.RowHeight() - 2);
  const QImage text = s.Picture().copy(right);
  int inked = 0;
  for (int x = 0; x < text.width(); ++x)
    for (int y = 0; y < text.height(); ++y) inked += text.pixelColor(x, y).lightness() < 128;
  EXPECT_GT(inked, 20) << "the text goes on behind the column's edge";
}

TEST(RowHeader, ALastColumnOfNumbersStaysAtItsOwnWidth) {
  ShownList s(3);
  ListOrder order = s.list.Header().GetColumnOrder();
  std::swap(order[1], order[14]);
  s.list.Header().SetColumnOrder(order);
  s.list.resize(1400, s.list.height());
  EXPECT_EQ(s.list.CellRect(0, Column::Count).width(), 60);
  EXPECT_EQ(s.list.ColumnAt(1300), std::nullopt);
}

TEST(RowHeader, ALastColumnThatIsScrolledAwayHasNoFreeRoom) {
  ShownList s(3);
  s.list.resize(300, s.list.height());
  EXPECT_EQ(s.list.CellRect(0, Column::Stack).width(), 60);
}

TEST(RowHeader, AColumnOfJustTheWidthOfItsNameShowsItWhole) {
  constexpr int kMorePx = 20;
  ShownList s(0, 10, 90);
  RowHeader& header = HeaderOf(s);
  for (const ColumnInfo& column : kColumns) {
    const auto picture = [&](int widthPx, int shiftPx) {
      header.SetColumnWidth(column.column, widthPx);
      const QRect name(header.ColumnLeft(column.column) + RowHeader::kCellMarginPx + shiftPx, 3,
                       header.StringWidth(column.header) - 2 * RowHeader::kCellMarginPx - 2,
                       header.height() - 6);
      return header.viewport()->grab(name).toImage();
    };
    const int shift = column.align == ColumnAlign::Left    ? 0
                      : column.align == ColumnAlign::Right ? kMorePx
                                                           : kMorePx / 2;
    const int just = header.StringWidth(column.header);
    s.list.resize(2000, s.list.height());
    EXPECT_EQ(picture(just, 0), picture(just + kMorePx, shift)) << column.header;
  }
}
