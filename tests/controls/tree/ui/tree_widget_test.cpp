// Keyboard, mouse, scrolling and description of the tree on the screen.
#include "controls/tree/ui/tree_widget.h"

#include <gtest/gtest.h>

#include <QAccessible>
#include <QApplication>
#include <QHelpEvent>
#include <QScrollBar>
#include <QTest>
#include <QToolTip>
#include <chrono>

#include "support/tree_control_contract.h"

namespace {

class TreeWidget : public testing::Test {
 protected:
  TreeWidget() {
    m_owner.tree = &m_tree;
    m_tree.resize(400, 300);
    m_tree.show();
    m_tree.setFocus();
    QCoreApplication::processEvents();
  }
  // 1 with the children 11 and 12, 11 with 111, and 2; all open.
  void AddSmall() {
    m_1 = m_tree.InsertItem(0, 1, true);
    m_2 = m_tree.InsertItem(0, 2, true);
    m_11 = m_tree.InsertItem(m_1, 11, true);
    m_12 = m_tree.InsertItem(m_1, 12, false);
    m_111 = m_tree.InsertItem(m_11, 111, false);
    m_tree.Expand(m_1, true);
    m_tree.Expand(m_11, true);
    m_owner.reported.clear();
  }
  void AddMany(TreeItemData count) {
    for (TreeItemData data = 1; data <= count; ++data) m_tree.InsertItem(0, data, false);
    QCoreApplication::processEvents();
  }
  TreeItemData Selected() { return m_tree.ItemData(m_tree.SelectedItem()); }
  QPoint LabelOf(TreeItem item) {
    return m_tree.Painter().LabelRect(item, m_tree.Items().RowOf(item)).center();
  }
  QPoint ButtonOf(TreeItem item) {
    const QRect label = m_tree.Painter().LabelRect(item, m_tree.Items().RowOf(item));
    return {label.left() - m_tree.RowHeight() / 2, label.center().y()};
  }
  void Click(const QPoint& point, Qt::MouseButton button = Qt::LeftButton) {
    QTest::mouseClick(m_tree.viewport(), button, {}, point);
  }
  void Key(Qt::Key key) { QTest::keyClick(&m_tree, key); }
  std::vector<std::string> Reported() { return std::exchange(m_owner.reported, {}); }
  using Lines = std::vector<std::string>;

  RecordingTreeOwner m_owner;
  QtTreeControl m_tree{m_owner, "Procedure tree"};
  TreeItem m_1 = 0, m_2 = 0, m_11 = 0, m_12 = 0, m_111 = 0;
};

TEST_F(TreeWidget, APressOnAButtonOpensAndClosesAndIsNoClick) {
  AddSmall();
  Click(ButtonOf(m_1));
  EXPECT_EQ(m_tree.Items().Rows(), 2);
  EXPECT_TRUE(Reported().empty());
  Click(ButtonOf(m_1));
  EXPECT_EQ(m_tree.Items().Rows(), 5);
  EXPECT_EQ(Reported(), Lines{"expanding 1"});
  EXPECT_EQ(m_tree.SelectedItem(), 0U);
}

TEST_F(TreeWidget, AClickOnALabelSelectsAndIsReportedAtRelease) {
  AddSmall();
  QTest::mousePress(m_tree.viewport(), Qt::LeftButton, {}, LabelOf(m_12));
  EXPECT_EQ(Selected(), 12U);
  EXPECT_TRUE(Reported().empty());
  QTest::mouseRelease(m_tree.viewport(), Qt::LeftButton, {}, LabelOf(m_12));
  EXPECT_EQ(Reported(), Lines{"clicked 12"});
}

TEST_F(TreeWidget, AClickBesideAllLabelsSelectsNothing) {
  AddSmall();
  m_tree.SelectItem(m_2);
  Click({390, LabelOf(m_12).y()});
  Click({200, 290});
  EXPECT_EQ(Selected(), 2U);
  EXPECT_EQ(Reported(), (Lines{"clicked 0", "clicked 0"}));
}

TEST_F(TreeWidget, AnItemThatGoesUnderAHeldButtonIsNotClicked) {
  AddSmall();
  QTest::mousePress(m_tree.viewport(), Qt::LeftButton, {}, LabelOf(m_111));
  m_tree.DeleteItem(m_11);
  QTest::mouseRelease(m_tree.viewport(), Qt::LeftButton, {}, QPoint(5, 5));
  EXPECT_EQ(Reported(), Lines{"clicked 0"});
}

TEST_F(TreeWidget, TheRightButtonTellsTheItemBeforeTheMenu) {
  AddSmall();
  QTest::mousePress(m_tree.viewport(), Qt::RightButton, {}, LabelOf(m_12));
  EXPECT_EQ(Reported(), Lines{"right pressed 12"});
  QTest::mousePress(m_tree.viewport(), Qt::RightButton, {}, QPoint(200, 290));
  EXPECT_EQ(Reported(), Lines{"right pressed 0"});
}

TEST_F(TreeWidget, ADoubleClickIsReportedAndOpensNothing) {
  AddSmall();
  QTest::mouseDClick(m_tree.viewport(), Qt::LeftButton, {}, LabelOf(m_1));
  EXPECT_EQ(Reported(), Lines{"double clicked"});
  EXPECT_EQ(m_tree.Items().Rows(), 5);
}

TEST_F(TreeWidget, TheKeyboardWalksTheRowsAndOpensAndCloses) {
  AddSmall();
  Key(Qt::Key_Down);
  EXPECT_EQ(Selected(), 1U);
  Key(Qt::Key_Down);
  Key(Qt::Key_Down);
  EXPECT_EQ(Selected(), 111U);
  Key(Qt::Key_Left);
  EXPECT_EQ(Selected(), 11U);
  Key(Qt::Key_Left);
  EXPECT_EQ(m_tree.Items().Rows(), 4);
  Key(Qt::Key_Right);
  EXPECT_EQ(m_tree.Items().Rows(), 5);
  Key(Qt::Key_Right);
  EXPECT_EQ(Selected(), 111U);
  Key(Qt::Key_End);
  EXPECT_EQ(Selected(), 2U);
  Key(Qt::Key_Up);
  EXPECT_EQ(Selected(), 12U);
  Key(Qt::Key_Home);
  EXPECT_EQ(Selected(), 1U);
  Key(Qt::Key_Minus);
  EXPECT_EQ(m_tree.Items().Rows(), 2);
  Key(Qt::Key_Plus);
  EXPECT_EQ(m_tree.Items().Rows(), 5);
  Reported();
  Key(Qt::Key_Return);
  EXPECT_EQ(Reported(), Lines{"double clicked"});
}

TEST_F(TreeWidget, PageKeysMoveByWhatIsOnView) {
  AddMany(200);
  Key(Qt::Key_Home);
  Key(Qt::Key_PageDown);
  const TreeItemData page = Selected();
  EXPECT_EQ(page, static_cast<TreeItemData>(m_tree.RowsPerPage()));
  EXPECT_TRUE(m_tree.IsOnScreen(m_tree.SelectedItem()));
  Key(Qt::Key_PageDown);
  EXPECT_EQ(Selected(), 2 * page - 1);
  Key(Qt::Key_PageUp);
  Key(Qt::Key_PageUp);
  EXPECT_EQ(Selected(), 1U);
}

TEST_F(TreeWidget, TheScrollBarCountsRowsAndFollowsTrims) {
  AddMany(200);
  EXPECT_EQ(m_tree.verticalScrollBar()->maximum(), 200 - m_tree.RowsPerPage());
  m_tree.verticalScrollBar()->setValue(100);
  EXPECT_EQ(m_tree.TopRow(), 100);
  for (int i = 0; i < 50; ++i) m_tree.DeleteItem(m_tree.Walk(0, TreeStep::FirstChild));
  QCoreApplication::processEvents();
  EXPECT_EQ(m_tree.verticalScrollBar()->value(), 50);
  EXPECT_EQ(m_tree.ItemData(m_tree.ItemAt(0)), 101U);
}

TEST_F(TreeWidget, ADeepItemIsScrolledIntoViewAcross) {
  TreeItem item = 0;
  for (TreeItemData data = 1; data <= 200; ++data) item = m_tree.InsertItem(item, data, true);
  m_tree.SelectItem(item);
  m_tree.EnsureVisible(item);
  QCoreApplication::processEvents();
  const QRect label = m_tree.Painter().LabelRect(item, m_tree.Items().RowOf(item));
  EXPECT_TRUE(m_tree.viewport()->rect().contains(label)) << label.left();
  EXPECT_GE(m_tree.horizontalScrollBar()->maximum(), m_tree.LeftPx());
}

TEST_F(TreeWidget, ALowerWindowKeepsTheSelectedItemAndTheEndOnView) {
  AddMany(200);
  const TreeItem item = m_tree.Items().At(m_tree.RowsPerPage() - 1);
  m_tree.SelectItem(item);
  m_tree.resize(400, 200);
  EXPECT_TRUE(m_tree.IsOnScreen(item));
  m_tree.SelectItem(0);
  m_tree.EnsureVisible(m_tree.Items().At(199));
  m_tree.resize(400, 120);
  EXPECT_TRUE(m_tree.IsOnScreen(m_tree.Items().At(199)));
}

TEST_F(TreeWidget, WithoutTheKeyboardTheSelectionIsPalerAndHasNoFrame) {
  AddSmall();
  m_tree.SelectItem(m_12);
  const QRect label = m_tree.Painter().LabelRect(m_12, m_tree.Items().RowOf(m_12));
  const auto picture = [this] { return m_tree.viewport()->grab().toImage(); };
  const QPalette palette = m_tree.palette();
  const QColor base = palette.color(QPalette::Active, QPalette::Base);
  const QColor highlight = palette.color(QPalette::Active, QPalette::Highlight);
  ASSERT_TRUE(m_tree.hasFocus());
  const QImage with = picture();
  EXPECT_EQ(with.pixelColor(label.topLeft() + QPoint(1, 1)), highlight);
  // The frame is a whole line around the label, in the colour of the text.
  for (int x = label.left(); x <= label.right(); ++x)
    for (const int y : {label.top(), label.bottom()})
      ASSERT_EQ(with.pixelColor(x, y), palette.color(QPalette::Active, QPalette::Text)) << x;
  QWidget other;
  other.show();
  m_tree.clearFocus();
  const QImage without = picture();
  const QColor pale = without.pixelColor(label.topLeft() + QPoint(1, 1));
  EXPECT_EQ(without.pixelColor(label.topLeft()), pale) << "no frame";
  EXPECT_NE(pale, base);
  EXPECT_NE(pale, highlight);
  const auto distance = [](const QColor& a, const QColor& b) {
    return std::abs(a.red() - b.red()) + std::abs(a.green() - b.green()) +
           std::abs(a.blue() - b.blue());
  };
  EXPECT_LT(distance(pale, base), distance(highlight, base));
}

TEST_F(TreeWidget, DigitsBesideWideLettersLookLikeDigitsElsewhereOnTheSameBaseLine) {
  m_owner.texts = {{1, "測試0123456789"}, {2, "0123456789"}};
  m_tree.InsertItem(0, 1, false);
  m_tree.InsertItem(0, 2, false);
  const QImage picture = m_tree.viewport()->grab().toImage();
  const QFontMetrics metrics = m_tree.fontMetrics();
  const int digitsPx = metrics.horizontalAdvance("0123456789");
  const auto digits = [&](std::int64_t row) {
    const QRect label = m_tree.Painter().LabelRect(m_tree.Items().At(row), row);
    // The label ends with them; beside it are its margin and its lines.
    return picture.copy(label.right() + 1 - 4 - digitsPx, label.top(), digitsPx, label.height());
  };
  EXPECT_EQ(digits(0), digits(1));
}

TEST_F(TreeWidget, ItsRowsAreDescribedToAssistiveTechnology) {
  AddSmall();
  m_tree.SelectItem(m_11);
  QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(&m_tree);
  ASSERT_TRUE(tree);
  EXPECT_EQ(tree->role(), QAccessible::Tree);
  EXPECT_EQ(tree->text(QAccessible::Name), "Procedure tree");
  ASSERT_EQ(tree->childCount(), 5);
  QAccessibleInterface* const row = tree->child(1);
  EXPECT_EQ(row->role(), QAccessible::TreeItem);
  EXPECT_EQ(row->text(QAccessible::Name), "item 11");
  EXPECT_EQ(row->text(QAccessible::Description), "level 2");
  EXPECT_TRUE(row->state().expanded);
  EXPECT_TRUE(row->state().selected);
  EXPECT_EQ(tree->indexOfChild(row), 1);
  const QPoint middle = row->rect().center();
  EXPECT_EQ(tree->childAt(middle.x(), middle.y()), row);
  row->actionInterface()->doAction(QAccessibleActionInterface::toggleAction());
  EXPECT_TRUE(row->state().collapsed);
  EXPECT_EQ(tree->childCount(), 4);
  EXPECT_FALSE(tree->child(2)->state().expandable);
  EXPECT_EQ(tree->child(4), nullptr);
}

// A generous bound: on the usual machine it takes a fiftieth of a second.
TEST_F(TreeWidget, AMillionLeavesOpenWithoutAWait) {
  const TreeItem thread = m_tree.InsertItem(0, 1, true);
  m_owner.fill = [this](TreeItem item) {
    for (TreeItemData data = 0; data < 1000000; ++data) m_tree.InsertItem(item, data + 2, false);
  };
  const auto start = std::chrono::steady_clock::now();
  m_tree.Expand(thread, true);
  m_tree.grab();
  const auto took = std::chrono::steady_clock::now() - start;
  RecordProperty("milliseconds", static_cast<int>(took / std::chrono::milliseconds(1)));
  EXPECT_EQ(m_tree.Items().Rows(), 1000001);
  EXPECT_LT(took, std::chrono::seconds(3));
}

TEST_F(TreeWidget, AMarkedItemHasAStripeAndABoxAndIsSaid) {
  AddSmall();
  const QImage before = m_tree.viewport()->grab().toImage();
  m_owner.marks[2] = {{0xffffff, 0x218221}, 4, "look"};
  const QImage after = m_tree.viewport()->grab().toImage();
  const QRect row = m_tree.RowRect(m_tree.Items().RowOf(m_2));
  const QColor green(0x21, 0x82, 0x21);
  EXPECT_EQ(after.pixelColor(1, row.center().y()), green);
  EXPECT_EQ(after.pixelColor(m_tree.viewport()->width() - 5, row.center().y() - 3), green);
  EXPECT_EQ(before.copy(0, 0, before.width(), row.top()),
            after.copy(0, 0, after.width(), row.top()));
  QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(&m_tree);
  int said = 0;
  for (int i = 0; i < tree->childCount(); ++i)
    said += tree->child(i)->text(QAccessible::Description) == "level 1, Mark 4, Note: look";
  EXPECT_EQ(said, 1);
}

TEST_F(TreeWidget, TheNoteOfAnItemIsItsToolTip) {
  AddSmall();
  m_owner.marks[2] = {{0xffffff, 0x218221}, 4, "first <b>\nsecond"};
  const auto tipAt = [this](int y) {
    const QPoint at(m_tree.viewport()->width() / 2, y);
    QHelpEvent event(QEvent::ToolTip, at, m_tree.viewport()->mapToGlobal(at));
    QApplication::sendEvent(m_tree.viewport(), &event);
    return QToolTip::text().toStdString();
  };
  // One that is hidden still stands for a moment.
  const auto hasNoneAt = [&](int y) {
    tipAt(y);
    return QTest::qWaitFor([] { return QToolTip::text().isEmpty(); });
  };
  const int noted = m_tree.RowRect(m_tree.Items().RowOf(m_2)).center().y();
  EXPECT_NE(tipAt(noted).find("first &lt;b&gt;\nsecond"), std::string::npos) << tipAt(noted);
  m_owner.marks[2].note.clear();
  EXPECT_TRUE(hasNoneAt(noted));
  m_owner.marks[2].note = "look";
  EXPECT_NE(tipAt(noted).find("look"), std::string::npos);
  EXPECT_TRUE(hasNoneAt(m_tree.viewport()->height() - 2)) << "below the last item";
}

}  // namespace
