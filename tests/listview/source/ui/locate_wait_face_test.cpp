// The wait without an end: it blocks no window and stops no timer; Cancel ends it.
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QSignalSpy>
#include <QTest>
#include <QTimer>

#include "docview/ui/qt_host.h"
#include "listview/source/locate_wait.h"
#include "listview/source/source_map.h"
#include "listview/source/ui/locate_wait_face.h"

#include <gtest/gtest.h>

namespace {

LocateWaitFace* Box() {
  for (QWidget* widget : QApplication::topLevelWidgets()) {
    auto* box = dynamic_cast<LocateWaitFace*>(widget);
    if (box && box->isVisible()) return box;
  }
  return nullptr;
}

class LocateWaitTest : public testing::Test {
 protected:
  LocateWaitTest() {
    g_sourceMap.clear();
    m_host.RegisterFace<LocateWait, LocateWaitFace>();
  }
  // Locates a file of another name; `whileWaiting` runs once the box is up.
  bool Locate(const std::function<void()>& whileWaiting) {
    QTimer clock;
    QObject::connect(&clock, &QTimer::timeout, &clock, [&] {
      if (!Box()) return;
      clock.stop();
      whileWaiting();
    });
    clock.start(5);
    return LearnPathMapping(m_host, "/build/a.c", "/local/b.c");
  }
  static void PressCancel() { Box()->findChild<QPushButton*>("cancel")->click(); }

  QtHost m_host;
};

TEST_F(LocateWaitTest, TheBoxSaysWhatItDoesAndHasACancel) {
  EXPECT_FALSE(Locate([] {
    EXPECT_EQ(Box()->windowTitle(), QLatin1String("Tessera"));
    EXPECT_EQ(Box()->findChild<QLabel*>()->text(), QLatin1String("Locating source..."));
    PressCancel();
  }));
  EXPECT_EQ(Box(), nullptr);
  EXPECT_TRUE(g_sourceMap.empty());
}

TEST_F(LocateWaitTest, TheBoxShowsBothPathsWholeAndSaysWhyNothingCanBeLearned) {
  EXPECT_FALSE(Locate([] {
    QStringList paths, said;
    for (const QLineEdit* path : Box()->findChildren<QLineEdit*>()) {
      EXPECT_TRUE(path->isVisible() && path->isReadOnly());
      paths << path->accessibleName() + "=" + path->text();
    }
    EXPECT_EQ(paths, (QStringList{"Recorded path=/build/a.c", "Chosen file=/local/b.c"}));
    for (const QLabel* label : Box()->findChildren<QLabel*>()) {
      said << label->text();
      EXPECT_GE(label->height(), label->heightForWidth(label->width())) << "a line is cut";
    }
    EXPECT_TRUE(said.contains(
        "The chosen file has another name than the recorded one, so that nothing can be learned "
        "of where these files lie. Press Cancel, and choose the file that is named a.c."));
    PressCancel();
  }));
}

TEST_F(LocateWaitTest, TimersAndPostedCallsGoOnUntilCancelIsPressed) {
  int ticks = 0, posted = 0;
  const TimerId timer = m_host.SetTimer(10, [&] {
    ++ticks;
    m_host.Post([&] { ++posted; });
  });
  EXPECT_FALSE(Locate([&] {
    EXPECT_TRUE(QTest::qWaitFor([&] { return ticks >= 50 && posted >= 50; }, 20000));
    ASSERT_NE(Box(), nullptr) << "it never ends by itself";
    PressCancel();
  }));
  m_host.KillTimer(timer);
}

TEST_F(LocateWaitTest, OtherWindowsArePaintedAndTakeInput) {
  QPushButton window("press");
  int pressed = 0;
  QObject::connect(&window, &QPushButton::clicked, &window, [&] { ++pressed; });
  window.show();
  ASSERT_TRUE(QTest::qWaitForWindowExposed(&window));
  EXPECT_FALSE(Locate([&] {
    EXPECT_FALSE(QtHost::InModal());
    QTest::mouseClick(&window, Qt::LeftButton);
    EXPECT_EQ(pressed, 1);
    PressCancel();
  }));
}

TEST_F(LocateWaitTest, EnterDoesNotEndItAndEscDoes) {
  EXPECT_FALSE(Locate([] {
    QTest::keyClick(Box(), Qt::Key_Return);
    ASSERT_NE(Box(), nullptr);
    QTest::keyClick(Box(), Qt::Key_Escape);
  }));
}

TEST_F(LocateWaitTest, ItsCloseButtonIsItsCancel) {
  EXPECT_FALSE(Locate([] { Box()->close(); }));
  EXPECT_EQ(Box(), nullptr);
}

TEST_F(LocateWaitTest, AProgramThatClosesEndsIt) {
  bool behind = false;
  EXPECT_FALSE(Locate([&] {
    ASSERT_TRUE(LocateWait::CancelStanding());
    m_host.Post([&] { behind = true; });
  }));
  EXPECT_FALSE(LocateWait::CancelStanding());
  EXPECT_TRUE(QTest::qWaitFor([&] { return behind; }, 20000));
}

TEST_F(LocateWaitTest, AnEndOfAllLoopsEndsIt) {
  QTimer::singleShot(0, qApp, [this] { EXPECT_FALSE(Locate([] { QCoreApplication::exit(0); })); });
  EXPECT_EQ(QCoreApplication::exec(), 0);
  EXPECT_EQ(Box(), nullptr);
}

}  // namespace
