#include <gtest/gtest.h>

#include "row_list_harness.h"

namespace {
constexpr auto kShift = Qt::ShiftModifier;
constexpr auto kCtrl = Qt::ControlModifier;
using Strings = std::vector<std::string>;
}  // namespace

TEST(RowKeyboard, ArrowsMoveFocusAndSelectionTogether) {
  ShownList s(30);
  s.Click(3);
  s.Key(Qt::Key_Down);
  EXPECT_EQ(s.States(), "4 f4");
  s.Key(Qt::Key_Up);
  s.Key(Qt::Key_Up);
  EXPECT_EQ(s.States(), "2 f2");
}

TEST(RowKeyboard, TheArrowsStopAtTheEnds) {
  ShownList s(3);
  s.Click(0);
  s.Key(Qt::Key_Up);
  EXPECT_EQ(s.States(), "0 f0");
  s.Key(Qt::Key_End);
  s.Key(Qt::Key_Down);
  EXPECT_EQ(s.States(), "2 f2");
}

TEST(RowKeyboard, WithoutAFocusTheFirstArrowGoesToTheFirstRowOnView) {
  ShownList s(100);
  s.list.EnsureVisible(49);
  s.Key(Qt::Key_Down);
  EXPECT_EQ(s.States(), "40 f40");
}

TEST(RowKeyboard, PageDownGoesToTheEndOfThePageAndThenOnePageFurther) {
  ShownList s(100);
  s.Click(2);
  s.Key(Qt::Key_PageDown);
  EXPECT_EQ(s.States(), "9 f9");
  EXPECT_EQ(s.list.TopIndex(), 0);
  s.Key(Qt::Key_PageDown);
  EXPECT_EQ(s.States(), "18 f18");
  EXPECT_EQ(s.list.TopIndex(), 9);
  s.Key(Qt::Key_PageUp);
  EXPECT_EQ(s.States(), "9 f9");
  s.Key(Qt::Key_PageUp);
  EXPECT_EQ(s.States(), "0 f0");
}

TEST(RowKeyboard, HomeAndEndGoToTheFirstAndTheLastRow) {
  ShownList s(1000);
  s.Click(2);
  s.Key(Qt::Key_End);
  EXPECT_EQ(s.States(), "999 f999");
  EXPECT_EQ(s.list.TopIndex(), 990);
  s.Key(Qt::Key_Home);
  EXPECT_EQ(s.States(), "0 f0");
  EXPECT_EQ(s.list.TopIndex(), 0);
}

TEST(RowKeyboard, ShiftGrowsAndShrinksTheSelectionFromTheAnchor) {
  ShownList s(30);
  s.Click(5);
  for (int i = 0; i < 3; ++i) s.Key(Qt::Key_Down, kShift);
  EXPECT_EQ(s.States(), "5-8 f8");
  for (int i = 0; i < 5; ++i) s.Key(Qt::Key_Up, kShift);
  EXPECT_EQ(s.States(), "3-5 f3");
  s.Key(Qt::Key_End, kShift);
  EXPECT_EQ(s.States(), "5-29 f29");
}

TEST(RowKeyboard, CtrlMovesOnlyTheFocusAndCtrlSpaceTurnsOver) {
  ShownList s(30);
  s.Click(5);
  s.Key(Qt::Key_Down, kCtrl);
  s.Key(Qt::Key_Down, kCtrl);
  EXPECT_EQ(s.States(), "5 f7");
  s.Key(Qt::Key_Space, kCtrl);
  EXPECT_EQ(s.States(), "5 7 f7");
  s.Key(Qt::Key_Space, kCtrl);
  EXPECT_EQ(s.States(), "5 f7");
}

TEST(RowKeyboard, CtrlShiftAddsToWhatIsSelected) {
  ShownList s(30);
  s.Click(2);
  s.Click(6, kCtrl);
  s.Key(Qt::Key_Down, kCtrl | kShift);
  EXPECT_EQ(s.States(), "2 6-7 f7");
}

TEST(RowKeyboard, SpaceSelectsTheFocusedRowAlone) {
  ShownList s(30);
  s.Click(2);
  s.Key(Qt::Key_Down, kCtrl);
  s.Key(Qt::Key_Space);
  EXPECT_EQ(s.States(), "3 f3");
}

TEST(RowKeyboard, EnterOpensTheFocusedRow) {
  ShownList s(30);
  s.Key(Qt::Key_Return);
  EXPECT_EQ(s.owner.Reported(), Strings{}) << "no row has the focus";
  s.Click(4);
  s.owner.Reported();
  s.Key(Qt::Key_Return);
  EXPECT_EQ(s.owner.Reported(), Strings{"double 4"});
}

TEST(RowKeyboard, CtrlACtrlCAndLettersAreLeftToTheWindow) {
  ShownList s(30);
  s.Click(4);
  for (const auto& [key, modifiers] : std::vector<std::pair<Qt::Key, Qt::KeyboardModifiers>>{
           {Qt::Key_A, kCtrl}, {Qt::Key_C, kCtrl}, {Qt::Key_A, {}}, {Qt::Key_7, {}}}) {
    QKeyEvent event(QEvent::KeyPress, key, modifiers, modifiers ? QString() : QString("7"));
    QApplication::sendEvent(&s.list, &event);
    EXPECT_FALSE(event.isAccepted()) << key;
  }
  EXPECT_EQ(s.States(), "4 f4");
}

TEST(RowKeyboard, AnEmptyListTakesNoKey) {
  ShownList s(0);
  QKeyEvent event(QEvent::KeyPress, Qt::Key_Down, Qt::NoModifier);
  QApplication::sendEvent(&s.list, &event);
  EXPECT_FALSE(event.isAccepted());
}

TEST(RowKeyboard, LeftAndRightScrollAcross) {
  ShownList s(5);
  s.list.resize(300, s.list.height());
  QApplication::processEvents();
  const int left = s.list.Columns().ColumnLeft(Column::Sev);
  s.Key(Qt::Key_Right);
  EXPECT_LT(s.list.Columns().ColumnLeft(Column::Sev), left);
  s.Key(Qt::Key_Left);
  EXPECT_EQ(s.list.Columns().ColumnLeft(Column::Sev), left);
}

TEST(RowKeyboard, TheLossOfTheFocusIsReportedBeforeItsGain) {
  ShownList s(30);
  s.Click(4);
  s.owner.Reported();
  s.Key(Qt::Key_Down);
  EXPECT_EQ(s.owner.Reported(), (Strings{"4:0", "5:3"}));
}
