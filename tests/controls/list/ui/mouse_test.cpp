#include <gtest/gtest.h>

#include <QContextMenuEvent>
#include <QWheelEvent>

#include "row_list_harness.h"

namespace {

using Strings = std::vector<std::string>;

void Press(ShownList& s, int row, Qt::KeyboardModifiers modifiers = {}) {
  QTest::mousePress(s.list.viewport(), Qt::LeftButton, modifiers, s.At(row));
}
void Drag(ShownList& s, QPoint to, Qt::KeyboardModifiers modifiers = {}) {
  QMouseEvent move(QEvent::MouseMove, to, s.list.viewport()->mapToGlobal(to), Qt::NoButton,
                   Qt::LeftButton, modifiers);
  QApplication::sendEvent(s.list.viewport(), &move);
}
void Release(ShownList& s, QPoint at) {
  QTest::mouseRelease(s.list.viewport(), Qt::LeftButton, {}, at);
}

}  // namespace

TEST(RowMouse, AClickSelectsAloneAndIsReportedAfterTheChange) {
  ShownList s(30);
  s.Click(2);
  EXPECT_EQ(s.owner.Reported(), (Strings{"2:3", "click 2"}));
  s.Click(5);
  EXPECT_EQ(s.owner.Reported(), (Strings{"2:0", "5:3", "click 5"}));
  EXPECT_EQ(s.States(), "5 f5");
}

TEST(RowMouse, CtrlTurnsARowOverAndShiftSelectsFromTheAnchor) {
  ShownList s(30);
  s.Click(2);
  s.Click(5, Qt::ControlModifier);
  EXPECT_EQ(s.States(), "2 5 f5");
  s.Click(2, Qt::ControlModifier);
  EXPECT_EQ(s.States(), "5 f2");
  s.Click(6);
  s.Click(8, Qt::ShiftModifier);
  EXPECT_EQ(s.States(), "6-8 f8");
  s.Click(4, Qt::ShiftModifier);
  EXPECT_EQ(s.States(), "4-6 f4");
}

TEST(RowMouse, AClickBesideTheRowsClearsTheSelectionAndIsReportedAsNone) {
  ShownList s(3);
  s.Click(1);
  s.owner.Reported();
  s.Click(6);
  EXPECT_EQ(s.States(), "f1");
  EXPECT_EQ(s.owner.Reported(), (Strings{"1:1", "click -1"}));
  s.Click(6, Qt::ControlModifier);
  EXPECT_EQ(s.States(), "f1");
}

TEST(RowMouse, ADragSelectsARangeAndIsNoClick) {
  ShownList s(30);
  Press(s, 2);
  Drag(s, s.At(5));
  EXPECT_EQ(s.States(), "2-5 f5");
  Drag(s, s.At(1));
  EXPECT_EQ(s.States(), "1-2 f1");
  s.owner.Reported();
  Release(s, s.At(1));
  EXPECT_EQ(s.owner.Reported(), Strings{});
}

TEST(RowMouse, ADragWithCtrlKeepsWhatWasSelected) {
  ShownList s(30);
  s.Click(1);
  Press(s, 5, Qt::ControlModifier);
  Drag(s, s.At(7), Qt::ControlModifier);
  EXPECT_EQ(s.States(), "1 5-7 f7");
  Drag(s, s.At(6), Qt::ControlModifier);
  EXPECT_EQ(s.States(), "1 5-6 f6");
  Release(s, s.At(6));
}

TEST(RowMouse, ADragBeyondTheEdgeScrollsOnUntilTheEnd) {
  ShownList s(40);
  Press(s, 5);
  Drag(s, QPoint(90, s.list.viewport()->height() + 200));
  ASSERT_TRUE(QTest::qWaitFor([&] { return s.list.TopIndex() == 30; }, 20000));
  ASSERT_TRUE(QTest::qWaitFor([&] { return s.States() == "5-39 f39"; }, 20000)) << s.States();
  Drag(s, QPoint(90, -200));
  ASSERT_TRUE(QTest::qWaitFor([&] { return s.States() == "0-5 f0"; }, 20000)) << s.States();
  Release(s, s.At(0));
}

TEST(RowMouse, ATrimDuringADragMovesTheAnchorAlong) {
  ShownList s(30);
  s.list.EnsureVisible(25);
  Press(s, 20);
  s.list.DeleteRows(0, 10);
  Drag(s, s.At(12));
  EXPECT_EQ(s.States(), "10-12 f12");
  Release(s, s.At(12));
}

TEST(RowMouse, AClickOnARowThatIsTrimmedBeforeTheReleaseIsNoneOfTheOthers) {
  ShownList s(30);
  Press(s, 1);
  s.list.DeleteRows(0, 5);
  s.owner.Reported();
  Release(s, s.At(1));
  EXPECT_EQ(s.owner.Reported(), Strings{"click -1"});
}

TEST(RowMouse, ADoubleClickIsReportedOnceAndItsSecondReleaseIsNoClick) {
  ShownList s(30);
  s.Click(3);
  s.owner.Reported();
  QTest::mouseDClick(s.list.viewport(), Qt::LeftButton, {}, s.At(3));
  const Strings reported = s.owner.Reported();
  EXPECT_EQ(std::count(reported.begin(), reported.end(), "double 3"), 1);
  EXPECT_LE(std::count(reported.begin(), reported.end(), "click 3"), 1);
  EXPECT_EQ(reported.back(), "double 3");
}

TEST(RowMouse, TheRightButtonSelectsFirstAndKeepsASelectionThatItHits) {
  ShownList s(30);
  s.Click(2);
  s.Click(4, Qt::ShiftModifier);
  QTest::mousePress(s.list.viewport(), Qt::RightButton, {}, s.At(3));
  EXPECT_EQ(s.States(), "2-4 f3");
  QTest::mousePress(s.list.viewport(), Qt::RightButton, {}, s.At(7));
  EXPECT_EQ(s.States(), "7 f7");
}

TEST(RowMouse, TheMenuOpensAtTheMouse) {
  ShownList s(30);
  const QPoint global = s.list.viewport()->mapToGlobal(s.At(3));
  QContextMenuEvent event(QContextMenuEvent::Mouse, s.At(3), global);
  QApplication::sendEvent(s.list.viewport(), &event);
  EXPECT_EQ(s.owner.menus, (std::vector<std::pair<int, int>>{{global.x(), global.y()}}));
}

TEST(RowMouse, AMenuCanAskForTheColumnUnderIt) {
  ShownList s(30);
  const auto screenX = [&](int xPx) { return s.list.viewport()->mapToGlobal(QPoint(xPx, 0)).x(); };
  EXPECT_EQ(s.list.ColumnAtScreen(screenX(s.At(3).x())), ListColumn(Column::Count));
  EXPECT_EQ(s.list.ColumnAtScreen(screenX(5)), ListColumn(Column::Sev));
}

TEST(RowMouse, TheMenuKeyOpensItAtTheFocusedRowWhichIsBroughtIntoView) {
  ShownList s(300);
  s.list.SetItemState(200, kRowFocused, kRowFocused);
  QContextMenuEvent event(QContextMenuEvent::Keyboard, QPoint(0, 0), QPoint(0, 0));
  QApplication::sendEvent(s.list.viewport(), &event);
  ASSERT_EQ(s.owner.menus.size(), 1u);
  const QPoint at =
      s.list.viewport()->mapFromGlobal(QPoint(s.owner.menus[0].first, s.owner.menus[0].second));
  EXPECT_TRUE(s.list.viewport()->rect().contains(at));
  EXPECT_EQ(s.list.RowAt(at.y()), 200);
}

TEST(RowMouse, TheWheelScrollsRows) {
  ShownList s(300);
  const QPoint at = s.At(2);
  QWheelEvent event(at, s.list.viewport()->mapToGlobal(at), QPoint(), QPoint(0, -120), Qt::NoButton,
                    {}, Qt::NoScrollPhase, false);
  QApplication::sendEvent(s.list.viewport(), &event);
  EXPECT_EQ(s.list.TopIndex(), QApplication::wheelScrollLines());
}
