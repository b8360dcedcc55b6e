// The room that a view shares with what stands beside it, in real sizes.
#include "shell/mdi/ui/view_split.h"

#include <gtest/gtest.h>

#include <QPlainTextEdit>
#include <QTest>

namespace {

class ViewSplitTest : public testing::Test {
 protected:
  ViewSplitTest() {
    m_split.AddControl(&m_view);
    m_split.m_extentChanged = [this](int extentPx) { m_told.push_back(extentPx); };
    m_view.setMinimumSize(0, 0);
    SetSize(400, 300);
    m_split.show();
  }
  ~ViewSplitTest() override {
    m_split.ShowBeside(nullptr, BesideEdge::Below, 0);
    m_view.setParent(nullptr);
  }
  void SetSize(int widthPx, int heightPx) {
    m_split.resize(widthPx, heightPx);
    QTest::qWait(0);
  }
  void Show(BesideEdge edge, int extentPx) {
    m_split.ShowBeside(&m_beside, edge, extentPx);
    QTest::qWait(0);
  }
  // As a drag of the border does.
  void Move(int viewPx) {
    struct Border : QSplitter {
      using QSplitter::moveSplitter;
    };
    (m_split.*&Border::moveSplitter)(viewPx, 1);
  }
  int Lines(const QWidget& widget) const {
    return widget.height() / m_split.fontMetrics().lineSpacing();
  }

  QPlainTextEdit m_view, m_beside;
  ViewSplit m_split{nullptr};
  std::vector<int> m_told;
};

TEST_F(ViewSplitTest, AloneTheViewHasAllTheRoom) {
  QTest::qWait(0);
  EXPECT_EQ(m_view.size(), QSize(400, 300));
  Show(BesideEdge::Below, 100);
  m_split.ShowBeside(nullptr, BesideEdge::Below, 0);
  QTest::qWait(0);
  EXPECT_EQ(m_view.size(), QSize(400, 300));
  EXPECT_EQ(m_beside.parent(), nullptr);
  EXPECT_FALSE(m_beside.isVisible());
}

TEST_F(ViewSplitTest, BesideItTakesItsExtentOrAThird) {
  Show(BesideEdge::Below, 120);
  EXPECT_EQ(m_beside.size(), QSize(400, 120));
  Show(BesideEdge::Right, 150);
  EXPECT_EQ(m_beside.size(), QSize(150, 300));
  Show(BesideEdge::Below, 0);
  EXPECT_NEAR(m_beside.height(), 100, 4);
  EXPECT_TRUE(m_told.empty()) << "the user has moved nothing";
}

TEST_F(ViewSplitTest, ALargerWindowGivesTheRowsTheGain) {
  Show(BesideEdge::Below, 120);
  SetSize(800, 700);
  EXPECT_EQ(m_beside.height(), 120);
}

TEST_F(ViewSplitTest, WhereThereIsNoRoomForBothTheViewKeepsItsLinesAndTheExtentComesBack) {
  Show(BesideEdge::Below, 200);
  SetSize(400, 140);
  EXPECT_GE(Lines(m_view), 5);
  EXPECT_GE(m_beside.height(), 1);
  SetSize(400, 40);
  EXPECT_GT(m_view.height(), m_beside.height());
  SetSize(400, 400);
  EXPECT_EQ(m_beside.height(), 200);
  Show(BesideEdge::Right, 380);
  EXPECT_GE(m_view.width(), m_split.fontMetrics().averageCharWidth() * 20);
}

TEST_F(ViewSplitTest, LettersOfTwiceTheSizeKeepAsManyLines) {
  QFont large = m_split.font();
  large.setPointSizeF(large.pointSizeF() * 2);
  m_split.setFont(large);
  Show(BesideEdge::Below, 250);
  EXPECT_GE(Lines(m_view), 5);
  EXPECT_GT(m_beside.height(), 50);
}

TEST_F(ViewSplitTest, ABorderThatTheUserMovedIsToldOnceWhenItStands) {
  Show(BesideEdge::Below, 100);
  for (const int view : {190, 180, 170, 160}) Move(view);
  EXPECT_TRUE(m_told.empty()) << "it moves";
  EXPECT_TRUE(QTest::qWaitFor([this] { return !m_told.empty(); }));
  const int extent = 300 - 160 - m_split.handleWidth();
  EXPECT_EQ(m_told, std::vector<int>{extent});
  EXPECT_EQ(m_beside.height(), extent);
  SetSize(400, 500);
  EXPECT_EQ(m_beside.height(), extent) << "it is the wanted one now";
}

TEST_F(ViewSplitTest, TheUserCannotDragTheBorderOverTheLastLines) {
  Show(BesideEdge::Below, 100);
  Move(0);
  EXPECT_GE(Lines(m_view), 5);
}

TEST_F(ViewSplitTest, F8MovesTheBorderFromEitherSideAsFarAsADragCan) {
  Show(BesideEdge::Below, 100);
  m_split.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&m_split));
  const int line = m_split.fontMetrics().lineSpacing();
  m_beside.setFocus();
  QTest::keyClick(&m_beside, Qt::Key_F8);
  EXPECT_EQ(m_beside.height(), 100 + 2 * line);
  m_view.setFocus();
  QTest::keyClick(&m_view, Qt::Key_F8, Qt::ShiftModifier);
  QTest::keyClick(&m_view, Qt::Key_F8, Qt::ShiftModifier);
  EXPECT_EQ(m_beside.height(), 100 - 2 * line);
  EXPECT_TRUE(QTest::qWaitFor([this] { return !m_told.empty(); }));
  EXPECT_EQ(m_told, std::vector<int>{100 - 2 * line});
  for (int i = 0; i < 50; ++i) QTest::keyClick(&m_view, Qt::Key_F8, Qt::ShiftModifier);
  EXPECT_EQ(m_beside.height(), 2 * line);
  for (int i = 0; i < 50; ++i) QTest::keyClick(&m_view, Qt::Key_F8);
  EXPECT_GE(Lines(m_view), 5);
  EXPECT_GT(m_beside.height(), 100);
  QTest::keyClick(&m_view, Qt::Key_F8, Qt::ShiftModifier);
  EXPECT_GT(Lines(m_view), 7) << "it did not count beyond the end";
}

TEST_F(ViewSplitTest, F8MovesTheBorderAtTheRightTooAndAloneDoesNothing) {
  m_split.activateWindow();
  ASSERT_TRUE(QTest::qWaitForWindowActive(&m_split));
  m_view.setFocus();
  QTest::keyClick(&m_view, Qt::Key_F8);
  Show(BesideEdge::Right, 100);
  QTest::keyClick(&m_view, Qt::Key_F8);
  EXPECT_EQ(m_beside.width(), 100 + 4 * m_split.fontMetrics().averageCharWidth());
  EXPECT_TRUE(QTest::qWaitFor([this] { return !m_told.empty(); }));
  EXPECT_EQ(m_told.size(), 1u);
}

}  // namespace
