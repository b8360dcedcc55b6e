// Ends a test of windows that hangs, with a failure that says where: in a dialog or a menu that
// nobody closes.
//
// Shape    After some time every dialog and every menu that is open is named in a failure and
//          closed, again each second, so that the test goes on and ends. Where no events run any
//          more the program says which test it was in and where, and aborts.
// Owner    main() hands it to the test framework, which deletes it.
// Threads  The test's only. It uses SIGALRM.
#pragma once

#include <execinfo.h>
#include <gtest/gtest.h>
#include <signal.h>
#include <unistd.h>

#include <QApplication>
#include <QDialog>
#include <QLabel>
#include <QMenu>
#include <QTimer>
#include <algorithm>
#include <array>
#include <memory>
#include <string>

class HangGuard final : public testing::EmptyTestEventListener {
 public:
  static constexpr int kCloseAfterMs = 90'000, kAgainMs = 1000;
  static constexpr unsigned kAbortAfterSeconds = 150;

  explicit HangGuard(int closeAfterMs = kCloseAfterMs) : m_closeAfterMs(closeAfterMs) {}

  void OnTestStart(const testing::TestInfo& test) override {
    const std::string words =
        std::string("Hangs without events: ") + test.test_suite_name() + "." + test.name() + "\n";
    Words().fill('\0');
    std::copy_n(words.begin(), std::min(words.size(), Words().size() - 1), Words().begin());
    signal(SIGALRM, &OnAlarm);
    alarm(kAbortAfterSeconds);
    m_clock = std::make_unique<QTimer>();
    QObject::connect(m_clock.get(), &QTimer::timeout, m_clock.get(), [this] {
      m_clock->setInterval(kAgainMs);
      CloseAll();
    });
    m_clock->start(m_closeAfterMs);
  }
  void OnTestEnd(const testing::TestInfo&) override {
    alarm(0);
    m_clock.reset();
  }

 private:
  static std::array<char, 256>& Words() {
    static std::array<char, 256> words{};
    return words;
  }
  static void OnAlarm(int) {
    const auto& words = Words();
    std::size_t length = 0;
    while (words[length] != '\0') ++length;
    [[maybe_unused]] const ssize_t written = write(STDERR_FILENO, words.data(), length);
    std::array<void*, 64> frames{};
    const int count = backtrace(frames.data(), static_cast<int>(frames.size()));
    backtrace_symbols_fd(frames.data(), count, STDERR_FILENO);
    abort();
  }
  static void CloseAll() {
    for (QWidget* const widget : QApplication::topLevelWidgets()) {
      auto* const dialog = qobject_cast<QDialog*>(widget);
      if (!widget->isVisible() || (!dialog && !qobject_cast<QMenu*>(widget))) continue;
      ADD_FAILURE() << "the test waits in " << NameOf(*widget);
      // Later: what it asks before it closes must not block this clock.
      QTimer::singleShot(0, widget, [widget, dialog] {
        if (dialog)
          dialog->reject();
        else
          widget->close();
      });
    }
  }
  static std::string NameOf(const QWidget& widget) {
    std::string name = widget.metaObject()->className();
    name += " \"" + widget.windowTitle().toStdString() + "\"";
    for (const QLabel* const label : widget.findChildren<QLabel*>())
      if (!label->text().isEmpty()) name += "\n  " + label->text().toStdString();
    return name;
  }

  const int m_closeAfterMs;
  std::unique_ptr<QTimer> m_clock;
};
