// A traced application: `body` in a process of its own, with pipes to the test for steps. Failed
// EXPECTs in it fail the test, at the latest when this is destroyed.
#pragma once

#include <fcntl.h>
#include <poll.h>
#include <signal.h>
#include <unistd.h>

#include <cstdint>
#include <functional>

#include "support/child_failures.h"
#include "support/wait_for_exit.h"

class TracedChild {
 public:
  explicit TracedChild(const std::function<int(TracedChild&)>& body) {
    EXPECT_EQ(pipe2(m_go, O_CLOEXEC), 0);
    EXPECT_EQ(pipe2(m_reported, O_CLOEXEC), 0);
    m_pid = fork();
    if (m_pid == 0) {
      close(m_go[1]);  // so that the end of the test ends all waiting in the child
      m_failures.ReportFromHere();
      _exit(body(*this));
    }
    close(m_reported[1]);  // so that the end of the child ends the pipe
  }
  ~TracedChild() {
    if (m_pid > 0) Kill();
    for (const int end : {m_go[0], m_go[1], m_reported[0]}) close(end);
  }
  TracedChild(const TracedChild&) = delete;
  TracedChild& operator=(const TracedChild&) = delete;

  // In the child.
  int ReportEnd() const { return m_reported[1]; }
  int GoEnd() const { return m_go[0]; }
  void Report(std::uint64_t number) {
    if (write(m_reported[1], &number, sizeof number) != sizeof number) _exit(99);
  }
  void AwaitGo() {
    char byte;
    if (read(m_go[0], &byte, 1) != 1) _exit(98);
  }
  // In the test.
  void Go() { EXPECT_EQ(write(m_go[1], "g", 1), 1); }
  std::uint64_t Reported() {
    pollfd ready{m_reported[0], POLLIN, 0};
    std::uint64_t number = ~std::uint64_t{0};
    if (poll(&ready, 1, 20000) != 1 || read(m_reported[0], &number, sizeof number) != 8)
      ADD_FAILURE() << "the child told nothing";
    return number;
  }
  pid_t Pid() const { return m_pid; }
  int Kill() {
    kill(m_pid, SIGKILL);
    return Wait();
  }
  // The exit status, or 1000 + the signal; -1 when it does not end in time.
  int Wait() {
    const int status = m_pid > 0 ? WaitForExit(m_pid) : -1;
    m_pid = 0;
    m_failures.Take();
    return status;
  }

 private:
  ChildFailures m_failures;
  pid_t m_pid = 0;
  int m_go[2] = {-1, -1}, m_reported[2] = {-1, -1};
};
