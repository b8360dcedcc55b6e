// The windows of the Find dialog and of a long search.
#include "tree/find/ui/find_face.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTest>
#include <functional>

#include "docview/ui/qt_host.h"
#include "docview/ui/work_box_face.h"
#include "support/endless_texts.h"
#include "support/pending_actions.h"
#include "support/qt_test_main.h"
#include "tree/find/find_settings.h"
#include "tree/regex/regex.h"

namespace {

class FindFaceTest : public testing::Test {
 protected:
  FindFaceTest() {
    FindSettings = {};
    m_host.RegisterFace<CFindDialog, FindFace>();
    m_host.RegisterFace<CWorkBox, WorkBoxFace>();
  }
  ~FindFaceTest() override { FindSettings = {}; }

  // Runs the dialog; `person` acts on its window, which is then closed.
  bool Run(const std::function<void(QDialog&)>& person) {
    m_host.Post(MustRun([person] {
      auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
      ASSERT_TRUE(window);
      person(*window);
      if (window->isVisible()) window->reject();
    }));
    return RunFindDialog(m_host);
  }
  static QPushButton& Button(QDialog& window, const char* id) {
    return *window.findChild<QPushButton*>(id);
  }

  QtHost m_host;
};

}  // namespace

TEST_F(FindFaceTest, HasTheTitleTheTextsAndTheNamesOfItsControls) {
  Run([](QDialog& window) {
    EXPECT_EQ(window.windowTitle(), "Find");
    EXPECT_EQ(window.findChild<QLabel*>()->text(), "Search &Text:");
    EXPECT_EQ(window.findChild<QCheckBox*>("1081")->text(), "Ignore &Case");
    EXPECT_EQ(window.findChild<QCheckBox*>("1126")->text(), "&Backward");
    EXPECT_EQ(window.findChild<QCheckBox*>("1127")->text(), "&Regular Expression");
    EXPECT_EQ(window.findChild<QCheckBox*>("1128")->text(), "&Word Search");
    EXPECT_EQ(Button(window, "1").text(), "OK");
    EXPECT_EQ(Button(window, "2").text(), "Cancel");
    EXPECT_EQ(Button(window, "57670").text(), "Help");
    EXPECT_TRUE(Button(window, "1").isDefault());
    int named = 0;
    for (const QWidget* control : window.findChildren<QWidget*>()) {
      if (control->focusPolicy() == Qt::NoFocus) continue;
      EXPECT_FALSE(control->accessibleName().isEmpty()) << control->objectName().toStdString();
      ++named;
    }
    EXPECT_EQ(named, 8);  // the text, four boxes and three buttons
  });
}

TEST_F(FindFaceTest, OkFollowsTheText) {
  Run([](QDialog& window) {
    auto* text = window.findChild<QLineEdit*>("1079");
    EXPECT_TRUE(text->hasFocus());
    EXPECT_FALSE(Button(window, "1").isEnabled());
    QTest::keyClicks(text, "we");
    EXPECT_TRUE(Button(window, "1").isEnabled());
    text->clear();
    EXPECT_FALSE(Button(window, "1").isEnabled());
  });
}

TEST_F(FindFaceTest, EnterTakesTextAndBoxesIntoTheSettings) {
  EXPECT_TRUE(Run([](QDialog& window) {
    auto* text = window.findChild<QLineEdit*>("1079");
    QTest::keyClicks(text, "a+b");
    for (const char* id : {"1081", "1126", "1127", "1128"})
      QTest::keyClick(window.findChild<QCheckBox*>(id), Qt::Key_Space);
    QTest::keyClick(text, Qt::Key_Return);
  }));
  EXPECT_EQ(FindSettings.searchText, "a+b");
  EXPECT_EQ(FindSettings.ignoreCase, 1);
  EXPECT_EQ(FindSettings.backward, 1);
  EXPECT_EQ(FindSettings.regularExpression, 1);
  EXPECT_EQ(FindSettings.wordSearch, 1);
}

TEST_F(FindFaceTest, AQuickEnterAfterAnAccessKeySearchesWithItsTick) {
  EXPECT_TRUE(Run([](QDialog& window) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClicks(window.findChild<QLineEdit*>("1079"), "web");
    QTest::keyClick(&window, Qt::Key_C, Qt::AltModifier);
    EXPECT_TRUE(window.findChild<QCheckBox*>("1081")->hasFocus());
    QTest::keyClick(window.focusWidget(), Qt::Key_Return);
  }));
  EXPECT_EQ(FindSettings.ignoreCase, 1);
  EXPECT_EQ(FindSettings.backward, 0);
}

TEST_F(FindFaceTest, AnAccessKeyHitTwiceInARowTicksAndUnticks) {
  Run([](QDialog& window) {
    ASSERT_TRUE(QTest::qWaitForWindowActive(&window));
    QTest::keyClick(&window, Qt::Key_W, Qt::AltModifier);
    EXPECT_TRUE(window.findChild<QCheckBox*>("1128")->isChecked());
    QTest::keyClick(&window, Qt::Key_W, Qt::AltModifier);
    EXPECT_FALSE(window.findChild<QCheckBox*>("1128")->isChecked());
  });
}

TEST_F(FindFaceTest, OffersTheLastSearchWithItsTextSelected) {
  FindSettings = {"Überlauf", 1, 0, 1, 0};
  Run([](QDialog& window) {
    auto* text = window.findChild<QLineEdit*>("1079");
    EXPECT_EQ(text->text(), "Überlauf");
    EXPECT_EQ(text->selectedText(), "Überlauf");
    EXPECT_TRUE(Button(window, "1").isEnabled());
    EXPECT_TRUE(window.findChild<QCheckBox*>("1081")->isChecked());
    EXPECT_FALSE(window.findChild<QCheckBox*>("1126")->isChecked());
    EXPECT_TRUE(window.findChild<QCheckBox*>("1127")->isChecked());
    EXPECT_FALSE(window.findChild<QCheckBox*>("1128")->isChecked());
  });
}

TEST_F(FindFaceTest, ABadPatternLeavesTheWindowOpenBehindItsBox) {
  bool reported = false;
  EXPECT_FALSE(Run([&](QDialog& window) {
    auto* text = window.findChild<QLineEdit*>("1079");
    text->setText("[abc");
    window.findChild<QCheckBox*>("1127")->setChecked(true);
    m_host.Post([&reported] {
      auto* box = qobject_cast<QMessageBox*>(QApplication::activeModalWidget());
      ASSERT_TRUE(box);
      EXPECT_EQ(box->text(), "Illegal search pattern.");
      EXPECT_EQ(box->icon(), QMessageBox::Critical);
      box->button(QMessageBox::Ok)->click();
      reported = true;
    });
    Button(window, "1").click();
    EXPECT_TRUE(reported);
    EXPECT_TRUE(window.isVisible());
    EXPECT_EQ(text->selectedText(), "[abc");
  }));
  EXPECT_EQ(FindSettings.searchText, "");
}

TEST_F(FindFaceTest, EscapeIsCancel) {
  EXPECT_FALSE(Run([](QDialog& window) {
    window.findChild<QLineEdit*>("1079")->setText("x");
    QTest::keyClick(&window, Qt::Key_Escape);
    EXPECT_FALSE(window.isVisible());
  }));
  EXPECT_EQ(FindSettings.searchText, "");
}

TEST_F(FindFaceTest, ALongSearchKeepsTheWindowAliveAndEscapeCancelsIt) {
  ASSERT_EQ(RegexPrepare("needle", 0, 1, 0, 0), 1);
  EndlessTexts texts;
  int ticks = 0;
  const TimerId clock = m_host.SetTimer(5, [&] {
    auto* window = qobject_cast<QDialog*>(QApplication::activeModalWidget());
    if (!window || ++ticks < 3) return;
    EXPECT_EQ(window->findChild<QLabel*>()->text(), "Searching...");
    EXPECT_EQ(window->findChild<QPushButton*>("2")->text(), "Cancel");
    QTest::keyClick(window, Qt::Key_Escape);
  });
  EXPECT_EQ(RunSearch(m_host, nullptr, texts), FindResult::Cancelled);
  m_host.KillTimer(clock);
  EXPECT_EQ(ticks, 3) << "timers ran on while the search worked";
}
