// What ends a test that hangs is tried with windows that nobody closes.
#include "support/hang_guard.h"

#include <gtest/gtest-spi.h>

#include <QTest>
#include <functional>

namespace {

// The failures that a guard reports while `act` waits; it must end.
void FailuresDuring(const std::function<void()>& act, testing::TestPartResultArray& failures) {
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  HangGuard guard(50);
  using Reporter = testing::ScopedFakeTestPartResultReporter;
  const Reporter reporter(Reporter::INTERCEPT_ONLY_CURRENT_THREAD, &failures);
  guard.OnTestStart(test);
  act();
  guard.OnTestEnd(test);
}

}  // namespace

TEST(HangGuard, ADialogThatNobodyClosesIsNamedAndClosed) {
  testing::TestPartResultArray failures;
  const auto act = [] {
    QDialog dialog;
    dialog.setWindowTitle("Locate source file");
    auto* const text = new QLabel("File not found.", &dialog);
    text->show();
    EXPECT_EQ(dialog.exec(), QDialog::Rejected);
  };
  FailuresDuring(act, failures);
  ASSERT_EQ(failures.size(), 1);
  const std::string words = failures.GetTestPartResult(0).message();
  EXPECT_NE(words.find("\"Locate source file\""), std::string::npos) << words;
  EXPECT_NE(words.find("File not found."), std::string::npos) << words;
}

TEST(HangGuard, ABoxAboveADialogAndAMenuEndToo) {
  testing::TestPartResultArray failures;
  const auto act = [] {
    QDialog below;
    QTimer::singleShot(0, &below, [&below] {
      QDialog above(&below);
      QTimer::singleShot(0, &above, [] {
        QMenu menu;
        menu.addAction("Copy");
        menu.exec();
      });
      above.exec();
    });
    below.exec();
  };
  FailuresDuring(act, failures);
  EXPECT_GE(failures.size(), 3);
}

TEST(HangGuard, WithoutEventsTheProgramEndsAndNamesTheTest) {
  const testing::TestInfo& test = *testing::UnitTest::GetInstance()->current_test_info();
  EXPECT_DEATH(
      {
        HangGuard guard;
        guard.OnTestStart(test);
        raise(SIGALRM);
      },
      "Hangs without events: HangGuard.WithoutEventsTheProgramEndsAndNamesTheTest\n.*libc");
}

TEST(HangGuard, ATestThatEndsInTimeFailsNothing) {
  testing::TestPartResultArray failures;
  FailuresDuring([] {}, failures);
  QTest::qWait(100);
  EXPECT_EQ(failures.size(), 0);
}
