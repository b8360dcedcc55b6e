#include "support/beside_area_contract.h"

#include <QAccessible>
#include <QPlainTextEdit>
#include <QTabBar>
#include <QTest>

#include "shell/beside/ui/beside_area_widget.h"
#include "support/qt_test_main.h"

namespace {

class TextControl final : public QPlainTextEdit, public ViewControl, public QtControl {
 public:
  QWidget* Widget() override { return this; }
  void SetFocus() override { setFocus(); }
};

class QtAreaHarness {
 public:
  QtAreaHarness() {
    m_window.resize(400, 300);
    m_rows.setGeometry(0, 0, 400, 100);
    m_area.setParent(&m_window);
    m_area.setGeometry(0, 100, 400, 200);
    m_window.show();
    m_window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&m_window));
    m_rows.setFocus();
  }
  ~QtAreaHarness() { m_area.setParent(nullptr); }
  BesideArea& Area() { return m_area; }
  RecordingAreaOwner& Owner() { return m_owner; }
  ViewControl& Control(std::size_t i) { return m_controls[i]; }
  std::string Tabs() const {
    std::string all;
    for (int at = 0; at < m_area.count(); ++at) {
      const QString title = m_area.tabText(at).replace("&&", "&");
      all += (at ? " " : "") + std::string(at == m_area.currentIndex() ? "*" : "") +
             title.toStdString();
    }
    return all;
  }
  bool IsSeen(std::size_t i) const {
    return m_controls[i].isVisible() && m_controls[i].width() > 300 && m_controls[i].height() > 100;
  }
  bool ControlHasFocus(std::size_t i) const { return m_controls[i].hasFocus(); }
  void ClickTab(std::size_t place) {
    QTest::mouseClick(m_area.tabBar(), Qt::LeftButton, {},
                      m_area.tabBar()->tabRect(static_cast<int>(place)).center());
  }
  void ClickClose(std::size_t place) {
    QTabBar& bar = *m_area.tabBar();
    QWidget* button = bar.tabButton(static_cast<int>(place), QTabBar::RightSide);
    if (!button) button = bar.tabButton(static_cast<int>(place), QTabBar::LeftSide);
    ASSERT_TRUE(button);
    QTest::mouseClick(button, Qt::LeftButton);
  }

 protected:
  QWidget m_window;
  QPlainTextEdit m_rows{&m_window};
  RecordingAreaOwner m_owner;
  TextControl m_controls[3];
  QtBesideArea m_area{m_owner};
};

INSTANTIATE_TYPED_TEST_SUITE_P(Qt, BesideAreaContract, QtAreaHarness);

class BesideAreaWidgetTest : public testing::Test, protected QtAreaHarness {};

TEST_F(BesideAreaWidgetTest, AControlThatIsGivenBackIsNoWindowOfItsOwn) {
  m_area.InsertTab(0, "Details", m_controls[0]);
  m_area.RemoveTab(0);
  EXPECT_EQ(m_controls[0].parent(), nullptr);
  EXPECT_FALSE(m_controls[0].isVisible());
}

TEST_F(BesideAreaWidgetTest, TheArrowKeysOfItsTabsChooseOne) {
  m_area.InsertTab(0, "Details", m_controls[0]);
  m_area.InsertTab(1, "Marks", m_controls[1]);
  m_area.tabBar()->setFocus();
  EXPECT_TRUE(m_area.HasFocus());
  QTest::keyClick(m_area.tabBar(), Qt::Key_Right);
  EXPECT_EQ(Tabs(), "Details *Marks");
  EXPECT_EQ(m_owner.Told(), std::vector<std::string>{"front 1"});
}

TEST_F(BesideAreaWidgetTest, AssistiveTechnologyReadsItsTabs) {
  m_area.InsertTab(0, "Details", m_controls[0]);
  QAccessibleInterface* const bar = QAccessible::queryAccessibleInterface(m_area.tabBar());
  ASSERT_TRUE(bar);
  EXPECT_EQ(bar->role(), QAccessible::PageTabList);
  ASSERT_GE(bar->childCount(), 1);
  EXPECT_EQ(bar->child(0)->text(QAccessible::Name), QStringLiteral("Details"));
}

TEST_F(BesideAreaWidgetTest, EachCloseButtonSaysWhatItCloses) {
  m_area.InsertTab(0, "Details", m_controls[0]);
  m_area.InsertTab(0, "Hits", m_controls[1]);
  m_area.SetTabTitle(0, "Hits & more");
  const auto nameOf = [this](int place) {
    QTabBar& bar = *m_area.tabBar();
    QWidget* button = bar.tabButton(place, QTabBar::RightSide);
    if (!button) button = bar.tabButton(place, QTabBar::LeftSide);
    return QAccessible::queryAccessibleInterface(button)->text(QAccessible::Name).toStdString();
  };
  EXPECT_EQ(nameOf(0), "Close Hits & more");
  EXPECT_EQ(nameOf(1), "Close Details");
}

}  // namespace
