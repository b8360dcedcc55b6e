// The real program as a child process; the environment variable TRC has its path.
#pragma once

#include <fcntl.h>
#include <gtest/gtest.h>
#include <linux/filter.h>
#include <linux/seccomp.h>
#include <malloc.h>
#include <poll.h>
#include <sched.h>
#include <signal.h>
#include <stdlib.h>
#include <string.h>
#include <sys/ioctl.h>
#include <sys/prctl.h>
#include <sys/resource.h>
#include <sys/syscall.h>
#include <sys/wait.h>
#include <time.h>
#include <unistd.h>

#include <chrono>
#include <string>
#include <vector>

struct TrcRun {
  int status = -1;  // the exit status; 1000 + signal when a signal ended it
  std::string out, err;
  long mostKilobytes = 0;  // the most memory at any time
};

struct TrcStart {
  std::vector<std::string> arguments;
  std::vector<std::string> environment = {};  // "NAME=value", added to ours
  std::string outTo = {};                     // a path for standard output; empty: a pipe
  bool outIsClosed = false;  // the reader closes the pipe before the program starts
  bool errIsTerminal = false;
  unsigned short columns = 0;  // of that terminal; 0: it does not say
  int closed = -1;             // a descriptor that is closed
  bool ignoreInterrupt = false;
  rlim_t fileBytesMax = RLIM_INFINITY;  // a longer file is an error, as on a full disk
  bool withoutNotify = false;           // no inotify
};

class TrcProcess {
 public:
  explicit TrcProcess(const TrcStart& start) {
    int out[2], err[2];
    OpenPipe(out);
    if (start.outIsClosed) close(out[0]);
    start.errIsTerminal ? OpenTerminal(err, start.columns) : OpenPipe(err);
    malloc_trim(0);  // what this program holds counts as memory of the child, until its exec
    m_process = fork();
    if (m_process == 0) BecomeTrc(start, out[1], err[1]);
    close(out[1]);
    close(err[1]);
    m_out = start.outIsClosed ? -1 : out[0];
    m_err = err[0];
  }
  ~TrcProcess() {
    if (m_process > 0) {
      kill(m_process, SIGKILL);
      waitpid(m_process, nullptr, 0);
    }
    CloseOut();
    close(m_err);
  }
  TrcProcess(const TrcProcess&) = delete;
  TrcProcess& operator=(const TrcProcess&) = delete;

  pid_t Id() const { return m_process; }
  void Interrupt() const { kill(m_process, SIGINT); }
  void Signal(int signal) const { kill(m_process, signal); }
  void Kill() const { kill(m_process, SIGKILL); }
  // Interrupts again and again until the program has ended.
  void InterruptUntilEnded() const {
    siginfo_t ended = {};
    while (waitid(P_PID, static_cast<id_t>(m_process), &ended, WEXITED | WNOHANG | WNOWAIT) == 0 &&
           ended.si_pid == 0 && !Late()) {
      Interrupt();
      sched_yield();
    }
  }
  // Waits until the program has used so much of a processor's time, or has ended.
  void WaitForWork(std::chrono::nanoseconds work) const {
    clockid_t clock{};
    timespec used{};
    while (!Late() && clock_getcpuclockid(m_process, &clock) == 0 &&
           clock_gettime(clock, &used) == 0 &&
           std::chrono::seconds(used.tv_sec) + std::chrono::nanoseconds(used.tv_nsec) < work)
      sched_yield();
  }
  // The output so far, at least `bytes` of it unless the program ends before.
  const std::string& ReadOut(std::size_t bytes) {
    while (m_run.out.size() < bytes && m_out >= 0) Pump();
    return m_run.out;
  }
  const std::string& ReadErrUntil(const std::string& words) {
    while (m_run.err.find(words) == std::string::npos && m_errOpen && !Late()) Pump();
    return m_run.err;
  }
  void CloseOut() {
    if (m_out >= 0) close(m_out);
    m_out = -1;
  }
  // Reads all output and waits for the end.
  TrcRun Finish() {
    while ((m_out >= 0 || m_errOpen) && !Late()) Pump();
    if (Late()) {
      ADD_FAILURE() << "trc does not end";
      kill(m_process, SIGKILL);
    }
    int status = 0;
    rusage used = {};
    wait4(m_process, &status, 0, &used);
    m_process = -1;
    m_run.mostKilobytes = used.ru_maxrss;
    m_run.status = WIFEXITED(status) ? WEXITSTATUS(status) : 1000 + WTERMSIG(status);
    return m_run;
  }
  bool Late() const { return std::chrono::steady_clock::now() > m_deadline; }

 private:
  static void OpenPipe(int (&ends)[2]) { ASSERT_EQ(pipe2(ends, O_CLOEXEC), 0); }
  static void OpenTerminal(int (&ends)[2], unsigned short columns) {
    ends[0] = posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(ends[0], 0);
    ASSERT_EQ(grantpt(ends[0]), 0);
    ASSERT_EQ(unlockpt(ends[0]), 0);
    ends[1] = open(ptsname(ends[0]), O_RDWR | O_NOCTTY | O_CLOEXEC);
    ASSERT_GE(ends[1], 0);
    const winsize size{.ws_row = 24, .ws_col = columns, .ws_xpixel = 0, .ws_ypixel = 0};
    EXPECT_EQ(ioctl(ends[1], TIOCSWINSZ, &size), 0);
  }
  [[noreturn]] static void BecomeTrc(const TrcStart& start, int out, int err) {
    if (!start.outTo.empty()) out = open(start.outTo.c_str(), O_WRONLY);
    dup2(out, STDOUT_FILENO);
    dup2(err, STDERR_FILENO);
    signal(SIGINT, start.ignoreInterrupt ? SIG_IGN : SIG_DFL);
    const rlimit fileSize{start.fileBytesMax, start.fileBytesMax};
    if (start.fileBytesMax != RLIM_INFINITY) {
      setrlimit(RLIMIT_FSIZE, &fileSize);
      signal(SIGXFSZ, SIG_IGN);  // inherited by the program: its write fails instead
    }
    for (const std::string& variable : start.environment) putenv(strdup(variable.c_str()));
    std::string program = getenv("TRC") ? getenv("TRC") : "TRC is not set";
    std::vector<std::string> words = start.arguments;
    std::vector<char*> argv = {program.data()};
    for (std::string& word : words) argv.push_back(word.data());
    argv.push_back(nullptr);
    if (start.withoutNotify) RefuseNotify();
    if (start.closed >= 0) close(start.closed);
    execv(program.c_str(), argv.data());
    _exit(127);
  }
  // As a system that has no inotify left for this account.
  static void RefuseNotify() {
    sock_filter code[] = {BPF_STMT(BPF_LD | BPF_W | BPF_ABS, offsetof(seccomp_data, nr)),
                          BPF_JUMP(BPF_JMP | BPF_JEQ | BPF_K, __NR_inotify_init1, 0, 1),
                          BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ERRNO | EMFILE),
                          BPF_STMT(BPF_RET | BPF_K, SECCOMP_RET_ALLOW)};
    const sock_fprog program = {std::size(code), code};
    if (prctl(PR_SET_NO_NEW_PRIVS, 1, 0, 0, 0) != 0 ||
        prctl(PR_SET_SECCOMP, SECCOMP_MODE_FILTER, &program) != 0)
      _exit(126);
  }
  void Pump() {
    pollfd ends[] = {{m_out, POLLIN, 0}, {m_errOpen ? m_err : -1, POLLIN, 0}};
    poll(ends, 2, 1000);
    char piece[65536];
    if (ends[0].revents != 0 && !Take(m_out, m_run.out, piece)) CloseOut();
    if (ends[1].revents != 0 && !Take(m_err, m_run.err, piece)) m_errOpen = false;
  }
  static bool Take(int from, std::string& to, char (&piece)[65536]) {
    const ssize_t count = read(from, piece, sizeof piece);
    if (count > 0) to.append(piece, static_cast<std::size_t>(count));
    return count >
           0;  // reading fails at the end of a terminal, and gives 0 bytes at the end of a pipe
  }

  const std::chrono::steady_clock::time_point m_deadline =
      std::chrono::steady_clock::now() + std::chrono::seconds(120);
  pid_t m_process = -1;
  int m_out = -1, m_err = -1;
  bool m_errOpen = true;
  TrcRun m_run;
};
