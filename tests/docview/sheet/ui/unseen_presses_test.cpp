// A wizard whose step takes its time, and a user who does not wait for it. The presses come as from
// the window system: to the window's handle, queued, with the time at which they happened.
#include "docview/sheet/ui/unseen_presses.h"

#include <gtest/gtest.h>

#include <QElapsedTimer>
#include <QStyleHints>
#include <QThread>

#include "docview/ui/qt_host.h"
#include "sheet_face_harness.h"
#include "support/pending_actions.h"

namespace {

class ImpatientFace final : public WizardFace {
 public:
  ImpatientFace(CPropertySheet& sheet, QWidget* parent)
      : WizardFace(sheet, parent, ContractFaces()) {}
};

class UnseenPressesTest : public testing::Test {
 protected:
  UnseenPressesTest() {
    m_host.RegisterFace<CPropertySheet, ImpatientFace>();
    m_clock.start();
    m_wizard.SetWizardMode();
    m_wizard.AddPage(m_a);
    m_wizard.AddPage(m_b);
    // The machine needs 300 ms, while the user presses twice more.
    m_a.onAnswer = [this] {
      for (int third = 0; third < 3; ++third) {
        m_impatience.push_back(Stamp());
        QThread::msleep(100);
      }
      m_impatience.erase(m_impatience.begin());
    };
    // What the user did comes after what the page has posted, as from the window system.
    m_b.onActive = [this] {
      m_wizard.SetWizardButtons(PSWIZB_BACK | PSWIZB_FINISH);
      m_host.Post([this] {
        for (const std::uint64_t stamp : m_impatience) m_press(stamp);
      });
    };
  }
  // The window system's clock began long before the program's.
  std::uint64_t Stamp() const { return 70'000'000 + static_cast<std::uint64_t>(m_clock.elapsed()); }
  static std::uint64_t DoubleClickMs() {
    return static_cast<std::uint64_t>(QGuiApplication::styleHints()->mouseDoubleClickInterval());
  }

  static QWidget& Window() { return *QApplication::activeModalWidget(); }
  static void Post(QInputEvent* event, std::uint64_t stamp) {
    event->setTimestamp(stamp);
    QCoreApplication::postEvent(Window().windowHandle(), event);
  }
  static void PostClick(unsigned id, std::uint64_t stamp) {
    auto* const button = Window().findChild<QPushButton*>(QString::number(id));
    const QPointF at = button->mapTo(&Window(), button->rect().center());
    for (const auto& [type, held] : {std::pair{QEvent::MouseButtonPress, Qt::LeftButton},
                                     {QEvent::MouseButtonRelease, Qt::NoButton}})
      Post(new QMouseEvent(type, at, Window().mapToGlobal(at), Qt::LeftButton, held, {}), stamp);
  }
  static void PostKey(int key, std::uint64_t stamp, bool repeated = false,
                      Qt::KeyboardModifiers modifiers = {}) {
    Post(new QKeyEvent(QEvent::KeyPress, key, modifiers, "\r", repeated), stamp);
    Post(new QKeyEvent(QEvent::KeyRelease, key, modifiers, "\r", repeated), stamp);
  }
  // When all that is posted has come, twice: presses may post, too.
  void Then(const std::function<void()>& act) {
    m_host.Post([this, act = MustRun(act)] { m_host.Post([this, act] { m_host.Post(act); }); });
  }
  // The first page answers at once, and the second one is the last. Passes on when the click was.
  void AfterAClickOnNext(const std::function<void(std::uint64_t first)>& act) {
    m_a.onAnswer = nullptr;
    m_b.onActive = [this] { m_wizard.SetWizardButtons(PSWIZB_BACK | PSWIZB_FINISH); };
    Then([this, act] {
      const std::uint64_t first = Stamp();
      PostClick(QtSheetFace::kNext, first);
      Then([act, first] { act(first); });
    });
  }
  std::string Log() const {
    std::string log;
    for (const std::string& each : m_log) log += each + ", ";
    return log;
  }
  // Presses Next; then B is in front, and the press that follows is one that saw it.
  void WalkAndFinish(const std::function<void(std::uint64_t)>& pressNext) {
    Then([this, pressNext] {
      pressNext(Stamp());
      Then([this] {
        EXPECT_EQ(Log(), "A begins, A active, A next, A asked, B begins, B active, ");
        EXPECT_EQ(m_impatience.size(), 2U);
        PostClick(QtSheetFace::kFinish, Stamp() + DoubleClickMs());
      });
    });
    EXPECT_EQ(m_wizard.DoModal(), CDialog::kIdOk);
    EXPECT_EQ(m_log.back(), "B finish");
  }

  QtHost m_host;
  SheetLog m_log;
  ContractPage m_a{m_host, 101, "A", m_log, 100}, m_b{m_host, 102, "B", m_log, 100};
  CPropertySheet m_wizard{m_host, "Setup Wizard"};
  QElapsedTimer m_clock;
  std::vector<std::uint64_t> m_impatience;  // when the user pressed again
  std::function<void(std::uint64_t)> m_press;
};

}  // namespace

TEST_F(UnseenPressesTest, ClicksWhileAStepWorksDoNotPressFinishWhichTheyDidNotSee) {
  m_press = [](std::uint64_t stamp) { PostClick(QtSheetFace::kFinish, stamp); };
  WalkAndFinish([](std::uint64_t stamp) { PostClick(QtSheetFace::kNext, stamp); });
}

TEST_F(UnseenPressesTest, NeitherDoesEnter) {
  m_press = [](std::uint64_t stamp) { PostKey(Qt::Key_Return, stamp); };
  WalkAndFinish([](std::uint64_t stamp) { PostKey(Qt::Key_Return, stamp); });
}

TEST_F(UnseenPressesTest, NorAnAccessKey) {
  m_press = [](std::uint64_t stamp) { PostKey(Qt::Key_F, stamp, false, Qt::AltModifier); };
  WalkAndFinish([](std::uint64_t stamp) { PostKey(Qt::Key_Return, stamp); });
}

// The keyboard repeats it for as long as it is held.
TEST_F(UnseenPressesTest, HoldingEnterTakesOneStep) {
  m_press = [this](std::uint64_t) { PostKey(Qt::Key_Return, Stamp(), true); };
  WalkAndFinish([](std::uint64_t stamp) { PostKey(Qt::Key_Return, stamp); });
}

TEST_F(UnseenPressesTest, EscStillCancels) {
  m_press = [](std::uint64_t stamp) { PostKey(Qt::Key_Escape, stamp); };
  Then([this] { PostClick(QtSheetFace::kNext, Stamp()); });
  EXPECT_EQ(m_wizard.DoModal(), CDialog::kIdCancel);
}

TEST_F(UnseenPressesTest, TheSecondClickOfADoubleClickDoesNotPressTheNextPagesButton) {
  AfterAClickOnNext([this](std::uint64_t first) {
    PostClick(QtSheetFace::kFinish, first + DoubleClickMs() - 1);
    Then([this, first] {
      EXPECT_EQ(m_log.back(), "B active");
      PostClick(QtSheetFace::kFinish, first + DoubleClickMs());
    });
  });
  EXPECT_EQ(m_wizard.DoModal(), CDialog::kIdOk);
  EXPECT_EQ(m_log.back(), "B finish");
}

TEST_F(UnseenPressesTest, AQuickPressAtAnotherPlaceCounts) {
  AfterAClickOnNext([this](std::uint64_t first) {
    PostClick(QtSheetFace::kBack, first + DoubleClickMs() - 1);
    Then([] { Window().close(); });
  });
  EXPECT_EQ(m_wizard.DoModal(), CDialog::kIdCancel);
  EXPECT_EQ(m_wizard.GetActiveIndex(), 0U);
}

TEST(UnseenPresses, ASecondPressIsNearTheOneThatTookTheStepInTimeAndInPlace) {
  UnseenPresses presses;
  const DoubleClickLimits limits{400, 5};
  presses.Presses({70'000, 300, 200});
  EXPECT_FALSE(presses.IsSecond({70'100, 300, 200}, limits)) << "there was no step";
  presses.StepBegins(1'000);
  presses.StepEnds(1'001);
  EXPECT_TRUE(presses.IsSecond({70'399, 305, 195}, limits));
  EXPECT_FALSE(presses.IsSecond({70'400, 300, 200}, limits));
  EXPECT_FALSE(presses.IsSecond({70'100, 306, 200}, limits));
  EXPECT_FALSE(presses.IsSecond({70'100, 300, 194}, limits));
  EXPECT_FALSE(presses.IsSecond({69'999, 300, 200}, limits)) << "another clock";
  EXPECT_FALSE(presses.IsSecond({0, 300, 200}, limits)) << "no time";
  presses.PressesElsewhere();  // on a radio button, say
  EXPECT_FALSE(presses.IsSecond({70'399, 305, 195}, limits));
  presses.Presses({70'000, 300, 200});
  presses.StepBegins(1'020);
  EXPECT_TRUE(presses.IsSecond({70'100, 300, 200}, limits));
  presses.StepBegins(1'050);  // by the keyboard
  EXPECT_FALSE(presses.IsSecond({70'100, 300, 200}, limits));
}

TEST(UnseenPresses, APressDuringAStepIsUnseenAndOneAfterItIsSeen) {
  UnseenPresses presses;
  presses.Arrives(70'000, 1'003);  // 3 ms on its way
  presses.Arrives(70'010, 1'010);
  presses.StepBegins(1'010);
  presses.StepEnds(5'010);
  EXPECT_FALSE(presses.IsUnseen(70'009));
  EXPECT_TRUE(presses.IsUnseen(70'010));
  presses.Arrives(74'009, 5'020);
  EXPECT_TRUE(presses.IsUnseen(74'009));
  EXPECT_FALSE(presses.IsUnseen(74'010));
}

TEST(UnseenPresses, APressWithoutATimeOrByAnotherClockIsSeen) {
  UnseenPresses presses;
  presses.Arrives(70'000, 1'000);
  presses.StepBegins(1'000);
  presses.StepEnds(5'000);
  presses.Arrives(0, 5'001);
  EXPECT_FALSE(presses.IsUnseen(0));
  presses.Arrives(12, 5'002);
  EXPECT_FALSE(presses.IsUnseen(12));
  EXPECT_TRUE(presses.IsUnseen(70'001));
}
