// The details beside the rows, in the real program.
#include "shell/details/ui/details_widget.h"

#include <QClipboard>
#include <QTabBar>

#include "controls/list/ui/row_list_widget.h"
#include "docview/commands/command_ids.h"
#include "shell/beside/ui/beside_area_widget.h"
#include "shell/child_frame.h"
#include "shell/mdi/ui/qt_child_frame.h"
#include "shell_fixture.h"

namespace {

class DetailsTest : public ShellTest {
 protected:
  void StartWith(int traces) {
    Start();
    Open(TraceFile("a.trc", traces));
    Rows().setFocus();
    Focus(0);
  }
  CMDIChildWnd& Child() { return *Frame().MDIGetActive(); }
  QtRowList& Rows() { return *Window().findChild<QtRowList*>("rows"); }
  void Focus(int row) {
    Rows().SetItemState(row, kRowFocused | kRowSelected, kRowFocused | kRowSelected);
    Settle();
  }
  QList<QWidget*> AllDetails() { return Window().findChildren<QWidget*>("details"); }
  QtDetails* Details() {
    const QList<QWidget*> all = AllDetails();
    return all.isEmpty() ? nullptr : static_cast<QtDetails*>(all.front());
  }
  QtBesideArea* Area() {
    return static_cast<QtBesideArea*>(Window().findChild<QWidget*>("beside"));
  }
  DetailText& TextEdit() {
    return *static_cast<DetailText*>(Details()->findChild<QPlainTextEdit*>("detailText"));
  }
  QString Text() { return TextEdit().toPlainText(); }
  void Press(int key, Qt::KeyboardModifiers with = Qt::NoModifier) {
    QWidget* const focus = QApplication::focusWidget();
    ASSERT_TRUE(focus);
    QTest::keyClick(focus, static_cast<Qt::Key>(key), with);
    Settle();
  }
  int RowsSeen() { return Rows().viewport()->height() / Rows().RowHeight(); }
};

TEST_F(DetailsTest, CtrlIShowsThemAndTheyFollowTheWalkThroughTheRows) {
  StartWith(50);
  EXPECT_FALSE(Area());
  Press(Qt::Key_I, Qt::ControlModifier);
  ASSERT_TRUE(Details());
  EXPECT_TRUE(Rows().hasFocus());
  EXPECT_EQ(Text(), QStringLiteral("trace 0"));
  Press(Qt::Key_Down);
  EXPECT_EQ(Text(), QStringLiteral("trace 1"));
  Press(Qt::Key_End);
  EXPECT_EQ(Text(), QStringLiteral("trace 49"));
  const QPointer<QWidget> gone = Area();
  Press(Qt::Key_I, Qt::ControlModifier);
  EXPECT_TRUE(Until([&] { return !gone; })) << "what is put away has no widget";
  EXPECT_FALSE(Details());
}

TEST_F(DetailsTest, F6GoesThereAndBackAndEscapeGoesBack) {
  StartWith(5);
  Press(Qt::Key_F6);
  EXPECT_TRUE(Rows().hasFocus()) << "there is nothing else";
  Press(Qt::Key_I, Qt::ControlModifier);
  Press(Qt::Key_F6);
  EXPECT_TRUE(Details()->isAncestorOf(QApplication::focusWidget()));
  Press(Qt::Key_F6);
  EXPECT_TRUE(Rows().hasFocus());
  Press(Qt::Key_F6);
  Press(Qt::Key_Tab);
  EXPECT_TRUE(TextEdit().hasFocus());
  Press(Qt::Key_Escape);
  EXPECT_TRUE(Rows().hasFocus());
  Press(Qt::Key_F6);
  Press(Qt::Key_I, Qt::ControlModifier);
  EXPECT_TRUE(Rows().hasFocus()) << "the details had it and have gone";
}

TEST_F(DetailsTest, TheTreeIsFollowedTooAndTheListAgainAfterIt) {
  StartWith(5);
  Press(Qt::Key_I, Qt::ControlModifier);
  Frame().OnCommand(ID_VIEW_PROC);
  Settle();
  EXPECT_TRUE(Details()->isVisible());
  EXPECT_EQ(Text(), QStringLiteral("trace 0"));
  Press(Qt::Key_Down);
  EXPECT_EQ(Text(), QStringLiteral("trace 1"));
  Press(Qt::Key_Home);
  EXPECT_NE(Text(), QStringLiteral("trace 1")) << "the node of the machine";
  Frame().OnCommand(ID_VIEW_PROC);
  Settle();
  Focus(3);
  EXPECT_EQ(Text(), QStringLiteral("trace 3"));
}

TEST_F(DetailsTest, AFieldOfThemFiltersTheRows) {
  StartWith(5);
  Press(Qt::Key_I, Qt::ControlModifier);
  static_cast<CTraceChildFrame&>(Child()).Filter().TakeStep("text == \"trace 2\"");
  EXPECT_TRUE(Until([this] { return Rows().ItemCount() == 1; }));
}

TEST_F(DetailsTest, AWindowThatClosesWithTheFocusInThemTakesThemAlong) {
  StartWith(5);
  Press(Qt::Key_I, Qt::ControlModifier);
  Press(Qt::Key_F6);
  Press(Qt::Key_F4, Qt::ControlModifier);
  EXPECT_TRUE(Until([this] { return Frame().Children().empty() && !Details(); }));
}

TEST_F(DetailsTest, ANewWindowHasDetailsOfItsOwn) {
  StartWith(5);
  Press(Qt::Key_I, Qt::ControlModifier);
  Frame().OnCommand(ID_WINDOW_NEW);
  Settle();
  EXPECT_EQ(AllDetails().size(), 2);
  Frame().OnCommand(ID_VIEW_DETAILS);
  Settle();
  EXPECT_EQ(AllDetails().size(), 1);
  Frame().OnCommand(ID_FILE_CLOSE);
  Settle();
  EXPECT_EQ(AllDetails().size(), 1);
  Focus(2);
  EXPECT_EQ(Text(), QStringLiteral("trace 2"));
}

TEST_F(DetailsTest, TheirTabsCloseButtonPutsThemAway) {
  StartWith(5);
  Press(Qt::Key_I, Qt::ControlModifier);
  QTabBar* const bar = Area()->tabBar();
  QWidget* button = bar->tabButton(0, QTabBar::RightSide);
  if (!button) button = bar->tabButton(0, QTabBar::LeftSide);
  ASSERT_TRUE(button);
  const QPointer<QWidget> gone = Area();
  QTest::mouseClick(button, Qt::LeftButton);
  EXPECT_TRUE(Until([&] { return !gone; }));
}

TEST_F(DetailsTest, InASmallWindowTheRowsKeepThreeLines) {
  StartWith(50);
  Press(Qt::Key_I, Qt::ControlModifier);
  auto* const window = static_cast<QtChildFrame*>(Child().Face())->Window();
  window->showNormal();
  for (const QSize size : {QSize(700, 500), QSize(400, 220), QSize(300, 160)}) {
    window->resize(size);
    Settle();
    EXPECT_GE(RowsSeen(), 3) << size.height();
  }
  Frame().OnCommand(ID_VIEW_BESIDERIGHT);
  window->resize(700, 400);
  Settle();
  EXPECT_GT(Details()->mapTo(&Window(), QPoint()).x(),
            Rows().mapTo(&Window(), QPoint(Rows().width(), 0)).x() - 1);
  EXPECT_GT(Details()->width(), 150);
  EXPECT_GE(RowsSeen(), 10);
}

TEST_F(DetailsTest, TheNextWindowBeginsWithThemAsTheLastOneWas) {
  StartWith(5);
  Press(Qt::Key_I, Qt::ControlModifier);
  Frame().OnCommand(ID_VIEW_BESIDERIGHT);
  Open(TraceFile("b.trc", 3));
  Settle();
  EXPECT_EQ(AllDetails().size(), 2);
}

TEST_F(DetailsTest, CtrlCInTheTextCopiesWhatIsSelectedThere) {
  StartWith(5);
  Press(Qt::Key_I, Qt::ControlModifier);
  Press(Qt::Key_F6);
  Press(Qt::Key_Tab);
  Press(Qt::Key_A, Qt::ControlModifier);
  Press(Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QApplication::clipboard()->text(), QStringLiteral("trace 0"));
}

}  // namespace
