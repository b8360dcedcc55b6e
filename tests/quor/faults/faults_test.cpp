// Applications of all lengths of life, through a service that dies, stops and stands still: what
// was traced is what was delivered and what is counted as lost, to the trace.
//
// A seed makes the plan; it is printed, and QUOR_FAULT_SEED plays it again. QUOR_FAULT_APPS is how
// many applications there are.
#include <sys/mman.h>
#include <sys/prctl.h>
#include <sys/time.h>

#include <quor/quor.hpp>
#include <random>
#include <set>

#include "apps/quord/quord_client.h"
#include "support/swept_segments.h"

namespace {

using std::chrono::milliseconds;
using Clock = std::chrono::steady_clock;

QUOR_POINT(fault_point, "Fault", "Step");

constexpr int kAtOnce = 8;

// In memory that the test shares with its applications: counted before and after each trace, so
// that of a killed one it is known to the trace that was just being written.
struct Made {
  std::atomic<std::uint64_t> begun, returned;
};

enum class End { Exit, QuickExit, Kill, Exec, Alarm };

struct Life {
  End end = End::Exit, childEnd = End::Exit;
  int traces = 0, childTraces = 0;
  int pauseUs = 0, lastUs = 0, alarmUs = 0;
  bool forks = false, closesAll = false, renames = false;
};

Life MakeLife(std::mt19937_64& random) {
  const auto oneOf = [&random](std::initializer_list<int> of) {
    return *(of.begin() + random() % of.size());
  };
  Life life;
  life.end = static_cast<End>(random() % 5);
  life.childEnd = static_cast<End>(random() % 4);
  life.traces = oneOf({0, 1, 2, 10, 100, 1000, 5000});
  life.childTraces = oneOf({0, 1, 10, 300});
  life.pauseUs = oneOf({0, 0, 0, 50, 500});
  life.lastUs = oneOf({0, 0, 200, 1000, 2000, 5000, 50000});
  life.alarmUs = oneOf({1, 200, 1000, 2000, 5000});
  life.forks = random() % 3 == 0;
  life.closesAll = random() % 4 == 0;
  life.renames = random() % 4 == 0;
  if (life.end == End::Alarm) life.traces = 200000;  // until the alarm
  return life;
}

void Trace(Made& made, int from, int to, int pauseUs) {
  for (int i = from; i < to; ++i) {
    made.begun.fetch_add(1);
    QUOR_TRACE_INFO(fault_point, "{}", i);
    made.returned.fetch_add(1);
    if (pauseUs != 0 && i % 50 == 0) usleep(static_cast<useconds_t>(pauseUs));
  }
}

[[noreturn]] void Finish(End end) {
  if (end == End::Kill || end == End::Alarm) kill(getpid(), SIGKILL);
  if (end == End::Exec) execl("/bin/true", "true", nullptr);
  if (end == End::Exit) std::exit(0);
  _exit(0);
}

[[noreturn]] void Live(const Life& life, Made& own, Made& childs) {
  if (life.end == End::Alarm) {
    const itimerval once{{0, 0}, {0, life.alarmUs}};
    setitimer(ITIMER_REAL, &once, nullptr);
  }
  const int half = life.traces / 2;
  Trace(own, 0, half, life.pauseUs);
  if (life.closesAll) close_range(3, ~0u, 0);
  if (life.renames) quor_application("renamed");
  if (life.forks && fork() == 0) {
    Trace(childs, 0, life.childTraces, 0);
    Finish(life.childEnd);
  }
  Trace(own, half, life.traces, life.pauseUs);
  if (life.lastUs != 0) usleep(static_cast<useconds_t>(life.lastUs));
  Finish(life.end);
}

class Faults : public ::testing::Test {
 protected:
  static std::uint64_t Number(const char* name, std::uint64_t otherwise) {
    const char* const text = getenv(name);
    return text ? std::strtoull(text, nullptr, 10) : otherwise;
  }
  void SetUp() override {
    // Children of applications that have ended become children of this process.
    prctl(PR_SET_CHILD_SUBREAPER, 1);
    void* const memory = mmap(nullptr, 2 * m_apps * sizeof(Made), PROT_READ | PROT_WRITE,
                              MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    ASSERT_NE(memory, MAP_FAILED);
    m_made = static_cast<Made*>(memory);
    setenv("QUOR_RING_MIB", "1", 1);
    quord.Start();
    ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
    monitor.keepTraces = false;
  }
  void TearDown() override {
    unsetenv("QUOR_RING_MIB");
    munmap(m_made, 2 * m_apps * sizeof(Made));
  }
  void Begin(std::size_t number) {
    const Life life = MakeLife(m_random);
    const pid_t pid = fork();
    if (pid == 0) Live(life, m_made[2 * number], m_made[2 * number + 1]);
    m_running.insert(pid);
  }
  void Reap() {
    siginfo_t ended{};
    while (waitid(P_ALL, 0, &ended, WEXITED | WNOHANG | WNOWAIT) == 0 && ended.si_pid != 0 &&
           ended.si_pid != quord.Pid()) {
      waitpid(ended.si_pid, nullptr, 0);
      m_running.erase(ended.si_pid);
      ended.si_pid = 0;
    }
  }
  void Pump() {
    monitor.Beat();
    monitor.Pump();
    Reap();
    if (m_stands && Clock::now() > m_goesOn) {
      kill(quord.Pid(), SIGCONT);
      m_stands = false;
    }
  }
  void Disturb() {
    if (m_stands) return;
    switch (m_random() % 3) {
      case 0:
        quord.Kill();
        break;
      case 1:
        EXPECT_EQ(quord.Stop(), 0);
        break;
      default:
        kill(quord.Pid(), SIGSTOP);
        m_stands = true;
        m_goesOn = Clock::now() + milliseconds(300);
        return;
    }
    EXPECT_TRUE(WaitFor([&] { return monitor.Pump(), monitor.ended || monitor.Socket() < 0; }));
    quord.Start();
    ASSERT_TRUE(monitor.Monitor(quord.SocketPath()));
  }
  std::uint64_t Counted() const { return monitor.delivered + monitor.lost + monitor.gaps; }

  const std::size_t m_apps = Number("QUOR_FAULT_APPS", 150);
  const std::uint64_t m_seed = Number("QUOR_FAULT_SEED", std::random_device()());
  std::mt19937_64 m_random{m_seed};
  Made* m_made = nullptr;
  std::set<pid_t> m_running;
  bool m_stands = false;
  Clock::time_point m_goesOn;
  QuordProcess quord;
  QuordClient monitor;
};

TEST_F(Faults, WhatWasTracedIsWhatWasDeliveredAndWhatIsCountedAsLost) {
  std::printf("seed %llu, %zu applications\n", static_cast<unsigned long long>(m_seed), m_apps);
  std::fflush(stdout);
  const std::size_t disturbedEvery = std::max<std::size_t>(m_apps / 10, 25);
  for (std::size_t next = 0; next < m_apps || !m_running.empty() || m_stands;) {
    while (m_running.size() < kAtOnce && next < m_apps) {
      Begin(next++);
      if (next % disturbedEvery == 0) Disturb();
      ASSERT_FALSE(HasFatalFailure());
    }
    Pump();
    poll(nullptr, 0, 1);
  }
  // When the last segment has been taken all traces have.
  EXPECT_TRUE(WaitFor([&] { return Pump(), AreSegmentsSwept(quord.SocketPath()); }, 60000));
  std::uint64_t begun = 0, returned = 0;
  for (std::size_t i = 0; i < 2 * m_apps; ++i) {
    begun += m_made[i].begun.load();
    returned += m_made[i].returned.load();
  }
  EXPECT_TRUE(WaitFor([&] { return Pump(), Counted() >= returned; }));
  std::printf("traced %llu to %llu: delivered %llu, lost %llu, in gaps %llu\n",
              static_cast<unsigned long long>(returned), static_cast<unsigned long long>(begun),
              static_cast<unsigned long long>(monitor.delivered),
              static_cast<unsigned long long>(monitor.lost),
              static_cast<unsigned long long>(monitor.gaps));
  EXPECT_GT(monitor.delivered, returned / 4) << "QUOR_FAULT_SEED=" << m_seed;
  EXPECT_GE(Counted(), returned) << "QUOR_FAULT_SEED=" << m_seed;
  EXPECT_LE(Counted(), begun) << "QUOR_FAULT_SEED=" << m_seed;
}

}  // namespace
