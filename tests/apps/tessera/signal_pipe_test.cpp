// What ends the program from outside reaches its event loop.
#include "signal_pipe.h"

#include <gtest/gtest.h>

#include <QCoreApplication>
#include <QEvent>
#include <csignal>

namespace {

class SignalPipeTest : public testing::Test {
 protected:
  SignalPipeTest() : m_application(m_argc, m_argv) {}

  char m_name[5] = "test";
  char* m_argv[2] = {m_name, nullptr};
  int m_argc = 1;
  QCoreApplication m_application;
  int m_asked = 0;
};

TEST_F(SignalPipeTest, EachSignalIsAnEventOfTheLoop) {
  for (const int signal : {SIGTERM, SIGINT, SIGHUP}) {
    const SignalPipe pipe([] { QCoreApplication::exit(7); });
    EXPECT_FALSE(pipe.Asked());
    std::raise(signal);
    EXPECT_EQ(QCoreApplication::exec(), 7) << signal;
    EXPECT_TRUE(pipe.Asked());
  }
}

TEST_F(SignalPipeTest, TheEndOfTheSessionIsNoCloseByTheUser) {
  const SignalPipe pipe([this] { ++m_asked; });
  QEvent quit(QEvent::Quit);  // what the session manager's message becomes
  QCoreApplication::sendEvent(&m_application, &quit);
  EXPECT_EQ(m_asked, 1);
  EXPECT_TRUE(pipe.Asked());
}

}  // namespace
